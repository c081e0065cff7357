import QtQuick
import Quillmar

// A button that is only a symbol; `text` is its accessible name.
Pressable {
    id: control

    property string symbol
    property color ink: Theme.linkText
    property int symbolSize: 24

    tip: text
    corner: Theme.target / 2
    padding: (Theme.target - symbolSize) / 2

    background: Rectangle {
        radius: height / 2
        color: Theme.alpha(Theme.text, control.down ? 0.12 : control.hovered ? 0.06 : 0)
        Behavior on color { ColorAnimation { duration: Theme.quick } }
    }
    contentItem: Symbol {
        implicitWidth: control.symbolSize
        implicitHeight: control.symbolSize
        name: control.symbol
        color: control.inUse ? control.ink : Theme.secondaryText
    }
}
