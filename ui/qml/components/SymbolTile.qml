import QtQuick
import Quillmar

// A symbol on a tinted square or circle.
Rectangle {
    property string symbol
    property color tint: Theme.blue
    property color ink: tint
    property int size: 40
    property real symbolShare: 0.56

    implicitWidth: size
    implicitHeight: size
    radius: size * 0.28
    color: Theme.alpha(tint, Theme.dark ? 0.24 : 0.13)

    Symbol {
        anchors.centerIn: parent
        width: Math.round(parent.size * parent.symbolShare)
        height: width
        name: parent.symbol
        color: parent.ink
    }
}
