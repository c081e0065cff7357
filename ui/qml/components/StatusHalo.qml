pragma ComponentBehavior: Bound
import QtQuick
import Quillmar

// A large symbol in a circle; while it pulses, slow rings spread from it.
Item {
    id: halo

    property string symbol
    property color tint: Theme.green
    property bool pulsing: true
    property int size: 104
    property real phase

    implicitWidth: size + 56
    implicitHeight: size + 56

    Repeater {
        model: 2
        Rectangle {
            required property int index
            readonly property real reach: halo.pulsing && !Theme.reducedMotion ? (halo.phase + index / 2) % 1 : 0.35 + index * 0.4

            anchors.centerIn: parent
            width: halo.size + 56 * reach
            height: width
            radius: width / 2
            color: halo.tint
            opacity: 0.16 * (1 - reach)
        }
    }
    Rectangle {
        anchors.centerIn: parent
        width: halo.size
        height: halo.size
        radius: width / 2
        color: Theme.page

        Rectangle {
            anchors.fill: parent
            radius: width / 2
            color: Theme.alpha(halo.tint, Theme.dark ? 0.24 : 0.15)
        }
        Symbol {
            anchors.centerIn: parent
            width: Math.round(halo.size * 0.52)
            height: width
            name: halo.symbol
            color: halo.tint
        }
    }

    NumberAnimation on phase {
        running: halo.pulsing && halo.visible && !Theme.reducedMotion
        from: 0
        to: 1
        duration: 3200
        loops: Animation.Infinite
    }
}
