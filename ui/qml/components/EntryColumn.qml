import QtQuick
import QtQuick.Layouts
import Quillmar

// A part of a page that fades and slides to its model's resting place, `wait` milliseconds after the page appears.
ColumnLayout {
    id: part

    property real restingOpacity: 1
    property real restingOffset: 0
    property int wait: 0
    property bool entered: false

    component Arrival: SequentialAnimation {
        id: arrival

        property int wait: 0

        PauseAnimation { duration: arrival.wait }
        NumberAnimation { duration: 500; easing.type: Easing.OutCubic }
    }

    Component.onCompleted: entered = true

    opacity: entered ? restingOpacity : 0
    Layout.fillWidth: true
    transform: Translate {
        y: part.entered || Theme.reducedMotion ? part.restingOffset : 30
        Behavior on y { Arrival { wait: part.wait } }
    }
    Behavior on opacity { Arrival { wait: part.wait } }
}
