import QtQuick
import Quillmar

// A QR code on white with the quiet zone that scanners need, in both looks.
Rectangle {
    id: plate

    property alias text: code.text
    property string name
    property int size: 200
    readonly property int quietZone: Math.max(Theme.section, code.modules > 0 ? Math.ceil(4 * size / code.modules) : 0)

    implicitWidth: size + 2 * quietZone
    implicitHeight: size + 2 * quietZone
    radius: 20
    color: Theme.qrPlate
    border.width: 1
    border.color: Theme.dark ? Theme.qrPlate : Theme.separator
    Accessible.role: Accessible.Graphic
    Accessible.name: name

    Elevation {
        z: -1
        anchors.fill: parent
        corner: plate.radius
        depth: 18
    }
    QRCode {
        id: code
        anchors.centerIn: parent
        width: plate.size
        height: plate.size
    }
    Symbol {
        anchors.centerIn: parent
        width: plate.size * 0.6
        height: width
        visible: !code.available
        name: "qrcode"
        color: Theme.qrPlateMark
    }
}
