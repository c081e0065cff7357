pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen
    readonly property var panel: screen.panel
    readonly property bool roomy: regular && height >= 900

    centered: roomy
    topSpace: Theme.within
    spacing: roomy ? Theme.gap : Theme.between
    bar: NavigationBar {
        trailing: IconButton {
            symbol: page.screen.settingsIcon
            text: page.screen.settingsLabel
            effect: page.screen.openSettings
        }
    }

    RowLayout {
        spacing: Theme.gap
        Layout.fillWidth: true

        Logo { size: 56 }
        ColumnLayout {
            spacing: 6
            Layout.fillWidth: true

            Label {
                text: page.screen.title
                font: Theme.title
                lineHeight: 1.15
                Layout.fillWidth: true
                Accessible.role: Accessible.Heading
            }
            Label {
                text: page.screen.tagline
                font: Theme.callout
                color: Theme.secondaryText
                Layout.fillWidth: true
            }
        }
    }

    Rectangle {
        implicitHeight: status.implicitHeight + 2 * (page.roomy ? 28 : Theme.gap)
        radius: 20
        color: Theme.alpha(Theme.tint(page.screen.statusColor), Theme.dark ? 0.12 : 0.09)
        Layout.fillWidth: true
        Layout.topMargin: Theme.within
        Behavior on color { ColorAnimation { duration: Theme.rerouting } }

        ColumnLayout {
            id: status
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.margins: Theme.section
            anchors.verticalCenter: parent.verticalCenter
            spacing: 6

            StatusHalo {
                size: page.roomy ? 104 : 84
                symbol: page.screen.statusIcon
                tint: Theme.tint(page.screen.statusColor)
                pulsing: page.screen.isPulsing
                Layout.alignment: Qt.AlignHCenter
            }
            Label {
                text: page.screen.headline
                font: Theme.title
                color: Theme.ink(page.screen.statusColor)
                horizontalAlignment: Text.AlignHCenter
                Layout.fillWidth: true
                Accessible.role: Accessible.Heading
            }
            Label {
                text: page.screen.statusLine
                font: Theme.callout
                color: Theme.cardSecondaryText
                horizontalAlignment: Text.AlignHCenter
                Layout.fillWidth: true
            }
        }
    }

    GridLayout {
        columns: page.contentWidth >= 320 * Theme.textScale ? 2 : 1
        columnSpacing: Theme.between
        rowSpacing: Theme.between
        Layout.fillWidth: true

        Repeater {
            model: page.screen.cards
            StatusCard {
                required property var modelData

                title: modelData.title
                value: modelData.value
                symbol: modelData.icon
                positive: modelData.isPositive
                mark: modelData.stateIcon
                upright: page.contentWidth >= 320 * Theme.textScale && page.contentWidth < 520 * Theme.textScale
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
            }
        }
    }

    Card {
        padding: page.regular ? 20 : Theme.gap
        spacing: page.regular ? Theme.gap : Theme.between
        Layout.fillWidth: true

        RowLayout {
            spacing: Theme.between
            Layout.fillWidth: true

            SymbolTile {
                symbol: page.panel.icon
                tint: Theme.tint(page.panel.color)
                size: 44
            }
            Label {
                text: page.panel.heading
                font: Theme.headline
                Layout.fillWidth: true
                Accessible.role: Accessible.Heading
            }
            Spinner { running: page.panel.isBusy }
        }
        Label {
            text: page.panel.text
            font: Theme.callout
            color: Theme.cardSecondaryText
            Layout.fillWidth: true
        }
        PrimaryButton {
            visible: text.length > 0
            text: page.panel.button ?? ""
            effect: page.screen.enableProtection
            Layout.fillWidth: true
        }
        Label {
            visible: text.length > 0
            text: page.panel.footnote ?? ""
            font: Theme.footnote
            color: Theme.cardSecondaryText
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
        }
    }

    RowLayout {
        visible: page.screen.lastCheckin !== null
        spacing: Theme.within
        Layout.fillWidth: true

        Label {
            text: page.screen.lastCheckin ?? ""
            font: Theme.footnote
            color: Theme.secondaryText
            leftPadding: Theme.unit
            Layout.fillWidth: true
        }
        TextLink {
            text: page.screen.refreshTitle
            effect: page.screen.refresh
        }
    }
}
