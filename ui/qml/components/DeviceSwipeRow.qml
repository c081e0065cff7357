import QtQuick
import QtQuick.Layouts
import Quillmar

// A device of a child; drawn to the left it opens and shows the button that unlinks it.
SwipeRow {
    id: device

    name: Look.plain(row.deviceDisplayName)
    description: row.lastSeenText
    effect: row.unlink
    actionTitle: row.unlinkTitle
    actionSymbol: row.unlinkIcon
    destructive: true
    key: Qt.Key_Delete
    inset: Theme.gap + 30 + Theme.between
    onTapped: row.tap.trigger()
    behind: Pressable {
        id: button
        anchors.right: parent.right
        anchors.rightMargin: 5
        height: parent.height
        width: device.row.buttonWidth
        text: device.row.unlinkTitle
        padding: 4
        focusPolicy: Qt.NoFocus
        effect: device.row.unlink

        background: Item {
            Rectangle {
                anchors.fill: parent
                anchors.topMargin: 5
                anchors.bottomMargin: 5
                radius: 9
                color: Theme.red
            }
        }
        contentItem: ColumnLayout {
            spacing: 2

            Item { Layout.fillHeight: true }
            Symbol {
                name: device.row.unlinkIcon
                color: Theme.onBrand
                Layout.preferredWidth: 18
                Layout.preferredHeight: 18
                Layout.alignment: Qt.AlignHCenter
            }
            Label {
                text: device.row.unlinkTitle
                font: Theme.caption
                color: Theme.onBrand
                lineHeight: 1
                Layout.alignment: Qt.AlignHCenter
                Accessible.ignored: true
            }
            Item { Layout.fillHeight: true }
        }
    }

    RowLayout {
        width: device.width
        height: Math.max(56, implicitHeight + Theme.gap)
        spacing: Theme.between

        SymbolTile {
            symbol: device.row.deviceIconName
            tint: Theme.tint(device.row.iconColor)
            size: 30
            symbolShare: 0.6
            Layout.leftMargin: Theme.gap
        }
        ColumnLayout {
            spacing: 3
            Layout.fillWidth: true

            Label {
                text: device.name
                lineHeight: 1
                wrapMode: Text.NoWrap
                elide: Text.ElideRight
                maximumLineCount: 1
                Layout.fillWidth: true
                Accessible.ignored: true
            }
            Label {
                text: device.row.lastSeenText
                font: Theme.footnote
                color: Theme.cardSecondaryText
                lineHeight: 1
                wrapMode: Text.NoWrap
                elide: Text.ElideRight
                Layout.fillWidth: true
                Accessible.ignored: true
            }
        }
        OnlineDot {
            online: device.row.isOnline
            Layout.rightMargin: Theme.gap
        }
    }
}
