import QtQuick
import Quillmar

// Green with a halo when online, grey when not. What it says stands in words beside it.
Item {
    property bool online: false
    property int size: 10

    implicitWidth: size + 4
    implicitHeight: size + 4

    Rectangle {
        anchors.fill: parent
        visible: parent.online
        radius: width / 2
        color: Theme.online
        opacity: 0.3
    }
    Rectangle {
        anchors.centerIn: parent
        width: parent.size
        height: parent.size
        radius: width / 2
        color: parent.online ? Theme.online : Theme.offline
    }
}
