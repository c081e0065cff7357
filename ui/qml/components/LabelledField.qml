import QtQuick
import QtQuick.Layouts
import Quillmar

// A text box with its name above it and an optional hint under it.
ColumnLayout {
    id: field

    property string title
    property string hint
    property alias box: box
    property alias value: box.value
    property alias placeholder: box.placeholderText
    property alias inputMethodHints: box.inputMethodHints
    property alias code: box.code
    property alias echoMode: box.echoMode
    property alias endSpace: box.endSpace
    default property alias inBox: end.data
    signal edited(string text)
    signal accepted

    spacing: 6
    Layout.fillWidth: true

    Label {
        visible: field.title.length > 0
        text: field.title
        font: Theme.footnoteStrong
        color: Theme.secondaryText
        Layout.fillWidth: true
        Accessible.ignored: true
    }
    TextBox {
        id: box
        name: field.title
        Layout.fillWidth: true
        description: field.hint
        onEdited: text => field.edited(text)
        onAccepted: field.accepted()

        Item {
            id: end
            anchors.right: parent.right
            anchors.rightMargin: 2
            anchors.verticalCenter: parent.verticalCenter
            width: childrenRect.width
            height: childrenRect.height
        }
    }
    Label {
        visible: field.hint.length > 0
        text: field.hint
        font: Theme.footnote
        color: Theme.secondaryText
        Layout.fillWidth: true
        Accessible.ignored: true
    }
}
