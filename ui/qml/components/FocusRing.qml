import QtQuick
import Quillmar

// Marks the control that has the keyboard focus.
Rectangle {
    // The control, which has a `visualFocus`.
    property var around: parent
    property real corner: Theme.corner
    property real gap: 3

    anchors.fill: around
    anchors.margins: -gap
    visible: around.visualFocus
    color: "transparent"
    radius: corner + gap
    border.width: 2
    border.color: Theme.linkText
}
