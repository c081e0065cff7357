import QtQuick
import Quillmar

// Green with a halo when online, grey when not. The symbol before it helps those who can't tell the colours apart,
// and `words` helps screen readers.
Row {
    id: mark

    property bool online: false
    property int size: 10
    readonly property string words: online ? qsTr("Online") : qsTr("Offline")

    spacing: 6
    Accessible.role: Accessible.Indicator
    Accessible.name: words

    Symbol {
        anchors.verticalCenter: parent.verticalCenter
        width: 16
        height: 16
        name: mark.online ? "wifi" : "wifi.slash"
        color: Theme.cardSecondaryText
    }
    Item {
        anchors.verticalCenter: parent.verticalCenter
        width: Look.haloDiameter(mark.size)
        height: width

        Rectangle {
            anchors.fill: parent
            visible: mark.online
            radius: width / 2
            color: Theme.online
            opacity: Theme.haloOpacity
        }
        Rectangle {
            anchors.centerIn: parent
            width: mark.size
            height: mark.size
            radius: width / 2
            color: mark.online ? Theme.online : Theme.offline
        }
    }
}
