pragma ComponentBehavior: Bound
import QtQuick
import Quillmar

// Eight fading spokes that rotate while it runs; hidden when stopped.
Item {
    id: spinner

    property bool running: true
    property color color: Theme.secondaryText
    property int size: 22
    property int step: 0
    readonly property int spokes: 8

    implicitWidth: size
    implicitHeight: size
    visible: running
    Accessible.role: Accessible.Animation
    Accessible.ignored: true

    Repeater {
        model: spinner.spokes
        Rectangle {
            id: spoke

            required property int index

            x: (spinner.width - width) / 2
            y: 0
            width: Math.max(2, spinner.size * 0.11)
            height: spinner.size * 0.29
            radius: width / 2
            color: spinner.color
            antialiasing: true
            opacity: 0.2 + 0.8 * (((index - spinner.step + spinner.spokes) % spinner.spokes) / (spinner.spokes - 1))
            transform: Rotation {
                origin.x: spoke.width / 2
                origin.y: spinner.height / 2
                angle: spoke.index * 360 / spinner.spokes
            }
        }
    }

    Timer {
        running: spinner.visible
        interval: 100
        repeat: true
        onTriggered: spinner.step = (spinner.step + 1) % spinner.spokes
    }
}
