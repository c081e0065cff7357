import QtQuick
import Quillmar

// The action of a list row, drawn as a button at its end: a word, or its symbol if the word needs more than `room`.
Pressable {
    id: control

    property string label
    property string symbol
    property bool destructive: false
    property real room: Infinity
    readonly property bool wordless: word.implicitWidth + 2 * Theme.between > room
    readonly property color ink: !inUse ? Theme.cardSecondaryText : destructive ? Theme.dangerText : Theme.linkText

    tip: wordless ? label : ""
    pointed: pointer.hovered
    // A press by mouse leaves the focus where it is.
    focusPolicy: Qt.TabFocus
    // A button that loses its action keeps the focus.
    enabled: true
    // Off, because a control that accepts hover events ends the hovering of its row. A handler below replaces
    // it.
    hoverEnabled: false
    leftPadding: Theme.between
    rightPadding: Theme.between
    corner: height / 2 - inset
    readonly property real inset: 6

    HoverHandler {
        id: pointer
        cursorShape: Qt.PointingHandCursor
    }

    background: Item {
        Rectangle {
            anchors.fill: parent
            anchors.topMargin: control.inset
            anchors.bottomMargin: control.inset
            radius: control.corner
            // Opaque, so that its word is as readable on every ground.
            color: Qt.tint(Theme.page, Theme.alpha(control.destructive ? Theme.red : Theme.blue,
                                                   control.down ? 0.26 : pointer.hovered ? 0.18 : 0.12))
            Behavior on color { ColorAnimation { duration: Theme.quick } }
        }
    }
    contentItem: Item {
        implicitWidth: control.wordless ? 18 : word.implicitWidth
        implicitHeight: 18

        Symbol {
            anchors.centerIn: parent
            width: 18
            height: 18
            visible: control.wordless
            name: control.symbol
            color: control.ink
        }
        Label {
            id: word
            anchors.centerIn: parent
            visible: !control.wordless
            text: control.label
            font: Theme.footnoteStrong
            color: control.ink
            lineHeight: 1
            wrapMode: Text.NoWrap
            Accessible.ignored: true
        }
    }
}
