import QtQuick
import QtQuick.Templates as T
import Quillmar

// One line of text that a person writes. It shows `value`, keeps the place of the cursor when that changes under it,
// and tells by `edited` what the person wrote.
T.TextField {
    id: box

    property string value
    property string name
    property bool code: false
    // Room at the end for what stands in the box.
    property real endSpace: 0
    signal edited(string text)

    implicitWidth: 200
    implicitHeight: Math.max(48, contentHeight + 2 * Theme.between)
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
    Accessible.name: name.length > 0 ? name : placeholderText

    onTextEdited: edited(text)
    onValueChanged: show()
    Component.onCompleted: show()

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
        border.color: box.activeFocus ? Theme.linkText : Theme.alpha(Theme.text, Theme.dark ? 0.1 : 0.06)
        Behavior on border.color { ColorAnimation { duration: Theme.quick } }
    }

    Label {
        anchors.fill: parent
        leftPadding: box.leftPadding
        rightPadding: box.rightPadding
        visible: box.length === 0 && box.preeditText.length === 0
        text: box.placeholderText
        font: Theme.body
        color: box.placeholderTextColor
        lineHeight: 1
        wrapMode: Text.NoWrap
        elide: Text.ElideRight
        horizontalAlignment: box.effectiveHorizontalAlignment
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
    HoverHandler {
        enabled: box.enabled
        cursorShape: Qt.IBeamCursor
    }
}
