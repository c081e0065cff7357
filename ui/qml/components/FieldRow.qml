import QtQuick
import Quillmar

// A text field as a row of a GroupedSection.
TextBox {
    id: row

    property bool first: false

    width: parent ? parent.width : 0
    // The edge of the focused row lies over that of the next.
    z: activeFocus ? 1 : 0
    implicitHeight: Math.max(Theme.target + 4, neededHeight)

    background: Item {
        // Adjacent rows share an edge.
        Rectangle {
            anchors.fill: parent
            anchors.topMargin: row.first ? 0 : -1
            radius: Theme.corner
            color: "transparent"
            border.width: row.activeFocus ? 2 : 1
            border.color: row.activeFocus ? Theme.linkText : Theme.edge
        }
    }
}
