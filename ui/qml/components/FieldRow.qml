import QtQuick
import Quillmar

// A row of a GroupedSection that a person writes in.
TextBox {
    id: row

    property bool first: false

    width: parent ? parent.width : 0
    implicitHeight: Math.max(Theme.target + 4, neededHeight)

    background: Item {
        Rectangle {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.leftMargin: Theme.gap
            height: 1
            visible: !row.first
            color: Theme.separator
        }
        Rectangle {
            anchors.fill: parent
            visible: row.activeFocus
            radius: Theme.corner
            color: "transparent"
            border.width: 2
            border.color: Theme.linkText
        }
    }
}
