import QtQuick
import QtQuick.Layouts
import Quillmar

// One thing that the application does for its family.
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
