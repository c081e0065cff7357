import QtQuick

// One colour of a stacked bar, round at its top only.
Item {
    id: part

    property color tint
    property bool rounded: true
    readonly property real corner: rounded ? Math.min(4, width / 3) : 0

    clip: true

    // Its lower end is cut off.
    Rectangle {
        width: parent.width
        height: parent.height + part.corner
        radius: part.corner
        color: part.tint
    }
}
