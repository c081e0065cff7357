import QtQuick
import QtQuick.Templates as T
import Quillmar

// One line of text that a person writes. It shows `value`, keeps the place of the cursor when that changes under it,
// and tells by `edited` what the person wrote.
T.TextField {
    id: box

    property string value
    // What a screen reader says of it.
    property string name
    property string description
    readonly property string spokenName: name.length > 0 ? name : placeholderText
    property bool code: false
    // Room at the end for what stands in the box.
    property real endSpace: 0
    signal edited(string text)

    implicitWidth: 200
    // A longer hint takes more lines; the box keeps their height, and nothing moves with the first letter.
    readonly property real neededHeight: Math.max(contentHeight, hintHeight) + 2 * Theme.between
    property real hintHeight: 0

    implicitHeight: Math.max(48, neededHeight)
    leftPadding: Theme.gap
    rightPadding: Theme.gap + endSpace
    verticalAlignment: TextInput.AlignVCenter
    font: code ? Theme.face(19, Font.DemiBold) : Theme.body
    color: enabled ? Theme.text : Theme.secondaryText
    selectionColor: Theme.blue
    selectedTextColor: Theme.onBrand
    placeholderTextColor: Theme.cardSecondaryText
    selectByMouse: true
    activeFocusOnTab: true
    Accessible.role: Accessible.EditableText
    Accessible.name: spokenName
    Accessible.description: description

    onTextEdited: edited(text)
    onValueChanged: show()
    Component.onCompleted: show()

    function takeHintHeight() { hintHeight = hint.implicitHeight }
    function show() {
        if (text === value) {
            return
        }
        const place = cursorPosition === length ? value.length : cursorPosition
        text = value
        cursorPosition = Math.min(place, length)
    }

    background: Rectangle {
        radius: Theme.corner
        color: Theme.card
        border.width: box.activeFocus ? 2 : 1
        border.color: box.activeFocus ? Theme.linkText : Theme.edge
        Behavior on border.color { ColorAnimation { duration: Theme.quick } }
    }

    Label {
        id: hint
        anchors.fill: parent
        leftPadding: box.leftPadding
        rightPadding: box.rightPadding
        visible: box.length === 0 && box.preeditText.length === 0
        text: box.placeholderText
        font: Theme.body
        color: box.placeholderTextColor
        lineHeight: 1
        horizontalAlignment: box.effectiveHorizontalAlignment
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
        // It changes while a layout gives the box its width, and then the layout would not hear of it.
        onImplicitHeightChanged: Qt.callLater(box.takeHintHeight) // qmllint disable type
    }
    HoverHandler {
        enabled: box.enabled
        cursorShape: Qt.IBeamCursor
    }
}
