import QtQuick
import Quillmar

// The scroll position of a long page, shown while it scrolls.
Rectangle {
    property Flickable flickable

    y: flickable.y + 2 + flickable.visibleArea.yPosition * (flickable.height - 4)
    width: 4
    height: Math.max(24, flickable.visibleArea.heightRatio * (flickable.height - 4))
    anchors.rightMargin: 3
    visible: flickable.visibleArea.heightRatio < 1
    radius: 2
    color: Theme.text
    opacity: flickable.moving ? 0.35 : 0
    Behavior on opacity { NumberAnimation { duration: Theme.moderate } }
}
