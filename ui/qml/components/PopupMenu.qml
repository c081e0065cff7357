import QtQuick
import QtQuick.Templates as T
import Quillmar

// A menu beside the control that opened it. Its items are MenuRows.
T.Menu {
    id: menu

    // What its actions are for; a screen reader says it.
    property string name: qsTr("Menu")

    implicitWidth: Math.max(240, contentItem.implicitWidth + 2 * padding)
    implicitHeight: contentItem.implicitHeight + 2 * padding
    padding: 6
    margins: Theme.within
    overlap: 0
    focus: true
    transformOrigin: Item.TopLeft

    background: Rectangle {
        radius: Theme.sheetCorner
        color: Theme.raised
        border.width: 1
        border.color: Theme.separator

        Elevation {
            z: -1
            anchors.fill: parent
            corner: Theme.sheetCorner
            depth: 22
        }
    }
    contentItem: ListView {
        id: rows
        implicitHeight: contentHeight
        implicitWidth: {
            let widest = 0
            for (let i = 0; i < menu.count; ++i) {
                widest = Math.max(widest, menu.itemAt(i).implicitWidth)
            }
            return widest
        }
        model: menu.contentModel
        interactive: contentHeight > height
        currentIndex: menu.currentIndex
        clip: interactive
        Accessible.role: Accessible.PopupMenu
        Accessible.name: menu.name

        // Over the rows' margin; it does not scroll with them.
        ScrollMarker {
            parent: rows
            y: 0
            flickable: rows
            anchors.right: parent.right
        }
    }
    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.quick }
        NumberAnimation { property: "scale"; from: Theme.reducedMotion ? 1 : 0.94; to: 1; duration: Theme.quick; easing.type: Easing.OutQuad }
    }
    exit: Transition {
        NumberAnimation { property: "opacity"; to: 0; duration: Theme.quick }
    }
}
