import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    topSpace: Theme.gap
    spacing: Theme.gap
    bar: NavigationBar {
        title: page.screen.name
        leading: IconButton {
            text: qsTr("Edit name")
            symbol: page.screen.editIcon
            symbolSize: 20
            effect: page.screen.editName
        }
        trailing: TextLink {
            text: page.screen.doneTitle
            strong: true
            effect: page.screen.done
        }
    }

    RowLayout {
        spacing: Theme.gap
        Layout.fillWidth: true

        Avatar {
            letters: page.screen.avatarLetter
            tint: Theme.tint(page.screen.avatarColor)
            size: 64
        }
        ColumnLayout {
            spacing: 4
            Layout.fillWidth: true

            Label {
                text: page.screen.name
                font: Theme.title
                lineHeight: 1.1
                maximumLineCount: 2
                elide: Text.ElideRight
                Layout.fillWidth: true
                Accessible.role: Accessible.Heading
            }
            Label {
                visible: text.length > 0
                text: page.screen.ageText ?? ""
                font: Theme.callout
                color: Theme.secondaryText
                lineHeight: 1
                Layout.fillWidth: true
            }
            RowLayout {
                spacing: 6

                Rectangle {
                    implicitWidth: 9
                    implicitHeight: 9
                    radius: 4.5
                    color: Theme.tint(page.screen.onlineDotColor)
                }
                Label {
                    text: page.screen.onlineText
                    font: Theme.footnote
                    color: Theme.secondaryText
                    lineHeight: 1
                }
            }
        }
    }

    SegmentedTabs {
        focus: true
        options: page.screen.tabs
        onChosen: option => page.screen.selectedTab = option
        Layout.fillWidth: true
    }

    Loader {
        Layout.fillWidth: true
        sourceComponent: ({ "Real-Time": realTime, "Sites Blocked": sitesBlocked,
                            "Sites Allowed": sitesAllowed })[page.screen.selectedTab]
    }

    Component {
        id: realTime
        ChildRealTimeTab { screen: page.screen } // qmllint disable unqualified
    }
    Component {
        id: sitesBlocked
        ChildSitesBlockedTab { screen: page.screen } // qmllint disable unqualified
    }
    Component {
        id: sitesAllowed
        ChildSitesAllowedTab { screen: page.screen } // qmllint disable unqualified
    }

    Alert {
        shown: page.screen.showUnlinkConfirmation
        title: page.screen.unlinkAlertTitle
        message: page.screen.unlinkAlertText

        AlertButton {
            text: page.screen.cancelTitle
            role: AlertButton.Cancel
            onClicked: page.screen.cancelUnlinking.trigger()
        }
        AlertButton {
            text: page.screen.unlinkTitle
            role: AlertButton.Destructive
            onClicked: page.screen.unlinkSelectedDevice.trigger()
        }
    }
    Alert {
        shown: page.screen.showDeleteConfirmation
        title: page.screen.deleteAlertTitle
        message: page.screen.deleteAlertText

        AlertButton {
            text: page.screen.cancelTitle
            role: AlertButton.Cancel
            onClicked: page.screen.cancelDeletion.trigger()
        }
        AlertButton {
            text: page.screen.deleteTitle
            role: AlertButton.Destructive
            onClicked: page.screen.deleteChildProfile.trigger()
        }
    }
    ErrorAlert { screen: page.screen }
}
