import QtQuick
import QtQuick.Layouts
import Quillmar

// A row of a GroupedSection without an action: a symbol, a title and a value. The value is at the end, or under the
// title if both do not fit on one line.
Item {
    id: row

    property string title
    property string value
    property string symbol
    property color tint: Theme.blue
    property color valueColor: Theme.cardSecondaryText
    property bool code: false
    property bool first: false
    property alias accessory: accessoryPlace.data
    readonly property real inset: symbol.length > 0 ? 30 + Theme.between : 0
    readonly property bool below: code
                                  || titleWidth.advanceWidth + valueWidth.advanceWidth + inset + accessoryPlace.width + 4 * Theme.gap > width

    width: parent ? parent.width : 0
    implicitHeight: Math.max(Theme.target + 4, grid.implicitHeight + 2 * Theme.between)
    Accessible.role: Accessible.ListItem
    Accessible.name: title
    Accessible.description: value

    TextMetrics {
        id: titleWidth
        font: Theme.body
        text: row.title
    }
    TextMetrics {
        id: valueWidth
        font: Theme.body
        text: row.value
    }
    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: Theme.gap + row.inset
        height: 1
        visible: !row.first
        color: Theme.separator
    }
    SymbolTile {
        id: tile
        anchors.left: parent.left
        anchors.leftMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        visible: row.symbol.length > 0
        symbol: row.symbol
        tint: row.tint
        size: 30
        symbolShare: 0.6
    }
    GridLayout {
        id: grid
        anchors.left: parent.left
        anchors.right: accessoryPlace.left
        anchors.leftMargin: Theme.gap + row.inset
        anchors.rightMargin: accessoryPlace.width > 0 ? Theme.within : 0
        anchors.verticalCenter: parent.verticalCenter
        columns: row.below ? 1 : 2
        columnSpacing: Theme.gap
        rowSpacing: 2

        Label {
            text: row.title
            lineHeight: row.below ? 1.2 : 1
            Layout.fillWidth: row.below
            Accessible.ignored: true
        }
        Label {
            visible: text.length > 0
            text: row.value
            font: row.code ? Theme.code : row.below ? Theme.callout : Theme.body
            color: row.valueColor
            lineHeight: row.below ? 1.2 : 1
            wrapMode: row.code ? Text.WrapAnywhere : Text.Wrap
            horizontalAlignment: row.below ? Text.AlignLeft : Text.AlignRight
            Layout.fillWidth: true
            Accessible.ignored: true
        }
    }
    Row {
        id: accessoryPlace
        anchors.right: parent.right
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
    }
}
