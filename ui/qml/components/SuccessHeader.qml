import QtQuick
import QtQuick.Layouts
import Quillmar

// A large success message.
ColumnLayout {
    id: header

    property string heading
    property string text

    spacing: Theme.within
    Layout.fillWidth: true
    Layout.topMargin: Theme.section

    SymbolTile {
        symbol: "checkmark.circle.fill"
        tint: Theme.green
        size: 88
        radius: 44
        Layout.alignment: Qt.AlignHCenter
        Layout.bottomMargin: Theme.within
    }
    Label {
        text: header.heading
        font: Theme.title
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
        Accessible.role: Accessible.Heading
    }
    Label {
        text: header.text
        font: Theme.callout
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }
}
