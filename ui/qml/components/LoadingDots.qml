pragma ComponentBehavior: Bound
import QtQuick
import Quillmar

// Three dots; the one at `phase` is lit.
Row {
    id: dots

    property int phase: 0
    property color color: Theme.blue

    spacing: 6
    Accessible.ignored: true

    Repeater {
        model: 3
        Rectangle {
            required property int index
            width: 8
            height: 8
            radius: 4
            color: dots.color
            opacity: index === dots.phase ? 1 : 0.3
            Behavior on opacity { NumberAnimation { duration: Theme.quick } }
        }
    }
}
