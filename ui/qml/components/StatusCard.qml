import QtQuick
import QtQuick.Layouts
import Quillmar

// A status in words, with a symbol and a colour. Upright, the words are under the symbol.
Card {
    id: card

    property string title
    property string value
    property string symbol
    property string mark
    property bool positive: false
    property bool upright: false
    readonly property color tint: positive ? Theme.green : Theme.orange

    spacing: Theme.between
    Accessible.role: Accessible.StaticText
    Accessible.name: title
    Accessible.description: value

    component Words: ColumnLayout {
        id: words

        property string title
        property string value

        spacing: 4

        Label {
            text: words.title
            font: Theme.footnote
            color: Theme.cardSecondaryText
            Layout.fillWidth: true
            Accessible.ignored: true
        }
        Label {
            text: words.value
            font: Theme.headline
            Layout.fillWidth: true
            Accessible.ignored: true
        }
    }

    RowLayout {
        spacing: Theme.between
        Layout.fillWidth: true
        Layout.fillHeight: !card.upright

        SymbolTile {
            symbol: card.symbol
            tint: card.tint
            ink: card.positive ? Theme.positiveText : Theme.warningText
            size: card.upright ? 40 : 44
        }
        Words {
            visible: !card.upright
            title: card.title
            value: card.value
            Layout.fillWidth: true
        }
        Item {
            visible: card.upright
            Layout.fillWidth: true
        }
        Symbol {
            implicitWidth: 22
            implicitHeight: 22
            name: card.mark
            color: card.tint
            Layout.alignment: card.upright ? Qt.AlignTop : Qt.AlignVCenter
        }
    }
    Words {
        visible: card.upright
        title: card.title
        value: card.value
        Layout.fillWidth: true
        Layout.fillHeight: true
    }
}
