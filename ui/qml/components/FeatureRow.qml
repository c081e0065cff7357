import QtQuick
import QtQuick.Layouts
import Quillmar

// One feature of the application, in a list of them.
RowLayout {
    property string symbol
    property string text
    property color tint: Theme.blue

    spacing: Theme.gap

    SymbolTile {
        symbol: parent.symbol
        tint: parent.tint
        size: 44
    }
    Label {
        text: parent.text
        Layout.fillWidth: true
    }
}
