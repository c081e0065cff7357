import QtQuick
import QtQuick.Layouts
import Quillmar

// What a screen shows if it has no content yet, followed by the possible actions.
ColumnLayout {
    id: empty

    property string symbol
    property string heading
    property string text

    spacing: Theme.within

    SymbolTile {
        symbol: empty.symbol
        size: 88
        radius: 44
        Layout.alignment: Qt.AlignHCenter
        Layout.bottomMargin: Theme.gap
    }
    Label {
        visible: text.length > 0
        text: empty.heading
        font: Theme.title
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
        Accessible.role: Accessible.Heading
    }
    Label {
        visible: text.length > 0
        text: empty.text
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
        Layout.bottomMargin: Theme.gap
    }
}
