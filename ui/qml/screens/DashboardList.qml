import QtQuick
import QtQuick.Layouts
import Quillmar

// The children of a family, and the totals of their devices.
ColumnLayout {
    id: list

    required property var screen
    // The id of the child whose page stands beside the list
    property string chosen

    spacing: Theme.gap

    ColumnLayout {
        spacing: 10
        Layout.fillWidth: true

        GridLayout {
            id: tiles

            readonly property real share: (width - 2 * columnSpacing) / 3
            readonly property bool flat: Math.max(childrenTile.neededWidth, devicesTile.neededWidth,
                                                  onlineTile.neededWidth) > share

            columns: flat ? 1 : 3
            columnSpacing: Theme.between
            rowSpacing: Theme.within
            Layout.fillWidth: true

            CountTile {
                id: childrenTile
                flat: tiles.flat
                count: list.screen.totalChildren
                label: list.screen.childrenLabel
                symbol: "person.2.fill"
                tint: Theme.blue
            }
            CountTile {
                id: devicesTile
                flat: tiles.flat
                count: list.screen.totalDevices
                label: list.screen.devicesLabel
                symbol: "iphone"
                tint: Theme.teal
            }
            CountTile {
                id: onlineTile
                flat: tiles.flat
                count: list.screen.onlineDevices
                label: list.screen.onlineLabel
                symbol: "wifi"
                tint: Theme.green
            }
        }
        RowLayout {
            spacing: 6
            Layout.fillWidth: true
            Layout.leftMargin: 4
            Layout.rightMargin: 4

            Item {
                implicitWidth: 14
                implicitHeight: 14

                Symbol {
                    id: status
                    anchors.fill: parent
                    visible: list.screen.statusIcon !== null
                    name: list.screen.statusIcon ?? ""
                    color: Theme.secondaryText

                    RotationAnimation on rotation {
                        running: list.screen.showsReload && !Theme.reducedMotion
                        from: 0
                        to: 360
                        duration: 1000
                        loops: Animation.Infinite
                        onStopped: status.rotation = 0
                    }
                }
                Spinner {
                    anchors.fill: parent
                    size: 14
                    running: list.screen.isBackgroundRefreshing
                }
            }
            Label {
                text: list.screen.updatedText
                font: Theme.caption
                color: Theme.secondaryText
                lineHeight: 1
                Layout.fillWidth: true
            }
            Label {
                text: list.screen.autoRefreshText
                font: Theme.caption
                color: Theme.secondaryText
                lineHeight: 1
                horizontalAlignment: Text.AlignRight
                Layout.fillWidth: true
            }
        }
    }

    ChoiceCard {
        symbol: list.screen.homeNetworkIcon
        text: list.screen.homeNetworkTitle
        detail: list.screen.homeNetworkText
        from: Theme.teal
        to: Theme.tealDark
        effect: list.screen.openHomeNetwork
        padding: Theme.gap
        corner: 18
        Layout.fillWidth: true
    }

    FilterPlace { screen: list.screen }
    QuietNote {
        visible: list.screen.noCardMatch !== null
        text: list.screen.noCardMatch ?? ""
    }
    DashboardCards {
        screen: list.screen
        chosen: list.chosen
        Layout.fillWidth: true
    }

    SecondaryButton {
        symbol: "plus.circle.fill"
        text: list.screen.addAnotherTitle
        effect: list.screen.addChild
        Layout.minimumHeight: Theme.primaryTarget
        Layout.fillWidth: true
    }
}
