import QtQuick
import QtQuick.Templates as T
import Quillmar

// A one-line text field. It shows `value`, keeps the cursor's place when that changes, and emits `edited` when the
// person types.
T.TextField {
    id: box

    property string value
    // Its accessible name.
    property string name
    property string description
    readonly property string spokenName: name.length > 0 ? name : placeholderText
    property bool code: false
    // While the person types, the page keeps the box where it is in the window.
    property bool keepsPlace: true
    // Room for controls at the end of the box.
    property real endSpace: 0
    signal edited(string text)

    implicitWidth: 200
    // A long hint wraps. The box keeps the hint's height, so that typing moves nothing.
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
        // The height changes while a layout sets the width, and the layout would miss that change.
        onImplicitHeightChanged: Qt.callLater(box.takeHintHeight) // qmllint disable type
    }
    HoverHandler {
        enabled: box.enabled
        cursorShape: Qt.IBeamCursor
    }
}
