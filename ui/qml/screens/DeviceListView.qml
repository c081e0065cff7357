import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen
    readonly property bool showsList: screen.content === "list"
    // Whether what it opens stands beside it, and what stands there otherwise
    property bool beside: false
    readonly property string rest: "DashboardRest.qml"

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
            Accessible.name: tip
            Accessible.onPressAction: accessiblePressAction()
            tip: qsTr("Menu")
            corner: Theme.target / 2
            padding: 5
            onClicked: menu.open()

            contentItem: Avatar {
                letters: page.screen.initials
                size: 34
                anchors.centerIn: parent
            }

            Loader {
                id: menu
                function open() {
                    if (!item) {
                        setSource("DashboardMenu.qml", { screen: page.screen, y: menuButton.height + 4 })
                    }
                    item.open() // qmllint disable type
                }
            }
        }
        trailing: [
            IconButton {
                visible: page.screen.openFilter.enabled
                text: page.screen.openFilterTitle
                symbol: "magnifyingglass"
                symbolSize: 22
                effect: page.screen.openFilter
            },
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

    LargeSpinner {
        visible: page.screen.content === "loading"
        text: page.screen.loadingText
        Layout.fillWidth: true
    }
    // Loaded on first use.
    Loader {
        readonly property var sources: ({ empty: "DashboardWelcome.qml", list: "DashboardList.qml" })
        readonly property string wanted: sources[page.screen.content] ?? ""
        visible: active
        active: wanted.length > 0
        Layout.fillWidth: true
        onWantedChanged: if (wanted.length > 0) setSource(wanted, { screen: page.screen })
        onLoaded: if (wanted === sources.list) item.chosen = Qt.binding(() => page.beside ? page.screen.selectedChild?.id ?? "" : "")
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
