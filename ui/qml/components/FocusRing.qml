import QtQuick
import Quillmar

// Shows where the keyboard is.
Rectangle {
    // A control that says by `visualFocus` whether it is there.
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
