pragma ComponentBehavior: Bound
import QtQuick
import Quillmar

// Four corners that show where to hold the code.
Item {
    id: finder

    property color color: Theme.onBrand
    property real arm: Math.min(width, height) * 0.16
    property real thickness: 4

    Repeater {
        model: 4

        Item {
            id: corner

            required property int index

            anchors.fill: parent
            rotation: index * 90

            Rectangle {
                width: finder.arm
                height: finder.thickness
                radius: height / 2
                color: finder.color
            }
            Rectangle {
                width: finder.thickness
                height: finder.arm
                radius: width / 2
                color: finder.color
            }
        }
    }
}
