import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen
    readonly property bool showsList: screen.content === "list"

    centered: !showsList
    maximumWidth: screen.maximumContentWidth
    topSpace: Theme.gap
    spacing: Theme.gap
    bar: NavigationBar {
        title: page.screen.title
        leading: Pressable {
            id: menuButton
            text: page.screen.initials
            Accessible.role: Accessible.ButtonMenu
            corner: Theme.target / 2
            padding: 5
            onClicked: menu.open()

            contentItem: Avatar {
                letters: page.screen.initials
                size: 34
                anchors.centerIn: parent
            }

            PopupMenu {
                id: menu
                y: menuButton.height + 4

                MenuRow {
                    symbol: page.screen.settingsIcon
                    text: page.screen.settingsTitle
                    effect: page.screen.openSettings
                }
                MenuRow {
                    symbol: page.screen.familyMembersIcon
                    text: page.screen.familyMembersTitle
                    effect: page.screen.openFamilyMembers
                }
                MenuRow {
                    symbol: page.screen.homeNetworkIcon
                    text: page.screen.homeNetworkTitle
                    effect: page.screen.openHomeNetwork
                }
                MenuRow {
                    symbol: page.screen.themeIcon
                    text: page.screen.themeTitle
                    effect: page.screen.cycleTheme
                }
                MenuRow {
                    symbol: page.screen.logoutIcon
                    text: page.screen.logoutTitle
                    effect: page.screen.logout
                    destructive: true
                }
            }
        }
        trailing: [
            IconButton {
                text: qsTr("Refresh")
                symbol: page.screen.refreshIcon
                symbolSize: 22
                effect: page.screen.loadChildren
            },
            IconButton {
                text: page.screen.addAnotherTitle
                symbol: page.screen.addChildIcon
                effect: page.screen.addChild
            }
        ]
    }

    Stage {
        shown: page.screen.content === "loading"

        LargeSpinner {
            text: page.screen.loadingText
            Layout.fillWidth: true
        }
    }

    Stage {
        shown: page.screen.content === "empty"
        first: addFirst

        EmptyState {
            symbol: "person.2.fill"
            heading: page.screen.welcomeHeading
            text: page.screen.welcomeText
            Layout.fillWidth: true
        }
        PrimaryButton {
            id: addFirst
            symbol: page.screen.addChildIcon
            text: page.screen.addFirstTitle
            effect: page.screen.addChild
            Layout.fillWidth: true
            Layout.maximumWidth: 420
            Layout.alignment: Qt.AlignHCenter
        }
        SecondaryButton {
            symbol: page.screen.homeNetworkIcon
            text: page.screen.setUpHomeNetworkTitle
            effect: page.screen.openHomeNetwork
            implicitHeight: Theme.primaryTarget
            Layout.fillWidth: true
            Layout.maximumWidth: 420
            Layout.alignment: Qt.AlignHCenter
        }
        Label {
            text: page.screen.setUpHomeNetworkCaption
            font: Theme.footnote
            color: Theme.secondaryText
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Layout.topMargin: -4
        }
    }

    Stage {
        shown: page.showsList
        spacing: Theme.gap

        ColumnLayout {
            spacing: 10
            Layout.fillWidth: true

            RowLayout {
                spacing: Theme.between
                Layout.fillWidth: true

                CountTile {
                    count: page.screen.totalChildren
                    label: page.screen.childrenLabel
                    symbol: "person.2.fill"
                    tint: Theme.blue
                }
                CountTile {
                    count: page.screen.totalDevices
                    label: page.screen.devicesLabel
                    symbol: "iphone"
                    tint: Theme.teal
                }
                CountTile {
                    count: page.screen.onlineDevices
                    label: page.screen.onlineLabel
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
                        anchors.fill: parent
                        visible: page.screen.statusIcon !== null
                        name: page.screen.statusIcon ?? ""
                        color: Theme.secondaryText
                    }
                    Spinner {
                        anchors.fill: parent
                        size: 14
                        running: page.screen.isBackgroundRefreshing
                    }
                }
                Label {
                    text: page.screen.updatedText
                    font: Theme.caption
                    color: Theme.secondaryText
                    lineHeight: 1
                    Layout.fillWidth: true
                }
                Label {
                    text: page.screen.autoRefreshText
                    font: Theme.caption
                    color: Theme.secondaryText
                    lineHeight: 1
                    horizontalAlignment: Text.AlignRight
                    Layout.fillWidth: true
                }
            }
        }

        ChoiceCard {
            symbol: page.screen.homeNetworkIcon
            text: page.screen.homeNetworkTitle
            detail: page.screen.homeNetworkText
            from: Theme.teal
            to: "#0A7D6A"
            effect: page.screen.openHomeNetwork
            padding: Theme.gap
            corner: 18
            Layout.fillWidth: true
        }

        Repeater {
            model: page.screen.cards

            DashboardCard {
                id: card

                required property var modelData
                readonly property int wait: Theme.reducedMotion ? 0 : modelData.appearanceDelay * 1000

                child: modelData
                opacity: page.screen.cardOpacity
                Layout.fillWidth: true
                transform: Translate {
                    y: Theme.reducedMotion ? 0 : page.screen.cardOffset
                    Behavior on y {
                        SequentialAnimation {
                            PauseAnimation { duration: card.wait }
                            NumberAnimation { duration: 300; easing.type: Easing.OutQuad }
                        }
                    }
                }
                Behavior on opacity {
                    SequentialAnimation {
                        PauseAnimation { duration: card.wait }
                        NumberAnimation { duration: 300; easing.type: Easing.OutQuad }
                    }
                }
            }
        }

        SecondaryButton {
            symbol: "plus.circle.fill"
            text: page.screen.addAnotherTitle
            effect: page.screen.addChild
            implicitHeight: Theme.primaryTarget
            Layout.fillWidth: true
        }
    }

    Alert {
        shown: page.screen.showLogoutConfirmation
        title: page.screen.confirmationTitle
        message: page.screen.confirmationText

        AlertButton {
            text: page.screen.cancelTitle
            role: AlertButton.Cancel
            onClicked: page.screen.cancelLogout.trigger()
        }
        AlertButton {
            text: page.screen.confirmTitle
            role: AlertButton.Destructive
            onClicked: page.screen.confirmLogout.trigger()
        }
    }
    ErrorAlert { screen: page.screen }
}
