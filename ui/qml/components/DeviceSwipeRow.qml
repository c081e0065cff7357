import QtQuick
import QtQuick.Layouts
import Quillmar

// A device. Swiped to the left it stays open and shows the button that removes it.
SwipeRow {
    id: device

    property string detail
    property color tint: Theme.blue
    // Room for `controls` at the end of the row.
    property real endSpace: 0
    // The content at the end of the row.
    default property alias mark: markPlace.data

    name: row.deviceDisplayName
    description: detail
    destructive: true
    key: Qt.Key_Delete
    inset: Theme.gap + 30 + Theme.between
    onTapped: row.tap.trigger()
    behind: Pressable {
        anchors.right: parent.right
        anchors.rightMargin: 5
        height: parent.height
        width: device.row.buttonWidth
        text: device.actionTitle
        padding: 4
        focusPolicy: Qt.NoFocus
        effect: device.effect

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
                name: device.actionSymbol
                color: Theme.onBrand
                Layout.preferredWidth: 18
                Layout.preferredHeight: 18
                Layout.alignment: Qt.AlignHCenter
            }
            Label {
                text: device.actionTitle
                font: Theme.caption
                color: Theme.onBrand
                lineHeight: 1
                wrapMode: Text.NoWrap
                // The row opens by a fixed width, so a longer word is drawn smaller.
                fontSizeMode: Text.HorizontalFit
                horizontalAlignment: Text.AlignHCenter
                Layout.fillWidth: true
                Accessible.ignored: true
            }
            Item { Layout.fillHeight: true }
        }
    }

    RowLayout {
        width: device.width - device.endSpace
        height: Math.max(56, implicitHeight + Theme.gap)
        spacing: Theme.between

        SymbolTile {
            symbol: device.row.deviceIconName
            tint: device.tint
            size: 30
            symbolShare: 0.6
            Layout.leftMargin: Theme.gap
        }
        ColumnLayout {
            spacing: 3
            Layout.fillWidth: true

            OneLine {
                line: device.name
                Layout.fillWidth: true
                Accessible.ignored: true

                Matches { part: device.part }
            }
            Label {
                visible: text.length > 0
                text: device.detail
                font: Theme.footnote
                color: Theme.cardSecondaryText
                lineHeight: 1.1
                maximumLineCount: 3
                elide: Text.ElideRight
                Layout.fillWidth: true
                Accessible.ignored: true
            }
        }
        RowLayout {
            id: markPlace
            spacing: 0
            opacity: device.showsButton ? 0 : 1
            Layout.minimumWidth: device.buttonSpace - Theme.gap
            Layout.rightMargin: Theme.gap

            Item { Layout.fillWidth: true }
        }
    }
}
