import QtQuick
import Quillmar

// The part of a wide window beside a screen. It contains the open page, or the screen's placeholder.
Rectangle {
    id: pane

    required property var screen
    required property string source
    property bool resting: false

    color: Theme.page

    Loader {
        anchors.fill: parent
        enabled: pane.resting
        opacity: pane.resting ? 1 : 0
        visible: opacity > 0
        Behavior on opacity { NumberAnimation { duration: Theme.moderate } }
        Component.onCompleted: setSource(pane.source, { screen: pane.screen })
    }
    Rectangle {
        anchors.left: parent.left
        width: 1
        height: parent.height
        z: 1
        color: Theme.separator
    }
}
