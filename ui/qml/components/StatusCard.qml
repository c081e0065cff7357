import QtQuick
import QtQuick.Layouts
import Quillmar

// How one thing stands: in words, with a mark, and in colour.
Card {
    id: card

    property string title
    property string value
    property string symbol
    property bool positive: false
    property string mark

    Accessible.role: Accessible.StaticText
    Accessible.name: title
    Accessible.description: value

    RowLayout {
        Layout.fillWidth: true
        spacing: Theme.between

        SymbolTile {
            symbol: card.symbol
            tint: card.positive ? Theme.green : Theme.orange
            ink: card.positive ? Theme.positiveText : Theme.warningText
            size: 44
        }
        ColumnLayout {
            spacing: 1
            Layout.fillWidth: true

            Label {
                text: card.title
                font: Theme.footnote
                color: Theme.cardSecondaryText
                topPadding: 0
                Layout.fillWidth: true
                Accessible.ignored: true
            }
            Label {
                text: card.value
                font: Theme.headline
                topPadding: 0
                Layout.fillWidth: true
                Accessible.ignored: true
            }
        }
        Symbol {
            implicitWidth: 22
            implicitHeight: 22
            name: card.mark
            color: card.positive ? Theme.green : Theme.orange
        }
    }
}
