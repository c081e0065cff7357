import QtQuick
import QtQuick.Layouts
import Quillmar

// A row of a GroupedSection that performs an action. While `spinning`, a spinner replaces its symbol.
Pressable {
    id: row

    property string symbol
    property color tint: Theme.blue
    property color ink: Theme.linkText
    property bool first: false
    property bool spinning: false
    property bool chevron: false
    // The symbol at the end of the row.
    property string mark: chevron ? mirrored ? "chevron.left" : "chevron.right" : ""

    width: parent ? parent.width : 0
    implicitHeight: Math.max(Theme.target + 4, implicitContentHeight + 2 * Theme.between)
    leftPadding: Theme.gap
    rightPadding: Theme.gap
    pressedScale: 1
    corner: Theme.corner - 2

    background: Item {
        Rectangle {
            anchors.fill: parent
            radius: Theme.corner
            color: Theme.alpha(Theme.text, row.down ? 0.10 : row.hovered ? 0.04 : 0)
            Behavior on color { ColorAnimation { duration: Theme.quick } }
        }
        Rectangle {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.leftMargin: Theme.gap + (row.symbol.length > 0 ? 30 + Theme.between : 0)
            height: 1
            visible: !row.first
            color: Theme.separator
        }
    }
    contentItem: RowLayout {
        spacing: Theme.between

        SymbolTile {
            visible: row.symbol.length > 0
            symbol: row.spinning ? "" : row.symbol
            tint: row.inUse ? row.tint : Theme.offline
            ink: row.inUse ? row.tint : Theme.cardSecondaryText
            size: 30
            symbolShare: 0.6

            Spinner {
                anchors.centerIn: parent
                running: row.spinning
                color: Theme.cardSecondaryText
                size: 18
            }
        }
        Label {
            text: row.text
            color: row.inUse ? row.ink : Theme.cardSecondaryText
            lineHeight: 1.1
            verticalAlignment: Text.AlignVCenter
            maximumLineCount: 3
            elide: Text.ElideRight
            Layout.fillWidth: true
            Accessible.ignored: true
        }
        Symbol {
            visible: row.mark.length > 0
            implicitWidth: 16
            implicitHeight: 16
            name: row.mark
            color: row.chevron ? Theme.cardSecondaryText : Theme.linkText
        }
    }
}
