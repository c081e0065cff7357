import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen
    // Larger texts need wider columns.
    readonly property bool twoColumns: Window.width >= Theme.twoColumnWidth * Math.max(1, Theme.textScale)
    readonly property bool showsControls: twoColumns || screen.selectedTab === "Real-Time"

    maximumWidth: twoColumns ? 2 * Theme.contentWidth + Theme.section : Theme.contentWidth
    topSpace: Theme.gap
    bottomSpace: 40 + addedSites.space
    spacing: Theme.gap
    readonly property AddedSites addedSites: AddedSites {
        parent: page
        rows: page.screen.addedSites
        contentWidth: page.contentWidth
    }
    bar: NavigationBar {
        title: page.screen.name
        leading: IconButton {
            text: qsTr("Edit name")
            symbol: page.screen.editIcon
            symbolSize: 20
            effect: page.screen.editName
        }
        trailing: [
            IconButton {
                visible: page.screen.openFilter.enabled
                text: page.screen.openFilterTitle
                symbol: "magnifyingglass"
                symbolSize: 22
                effect: page.screen.openFilter
            },
            TextLink {
                text: page.screen.doneTitle
                strong: true
                effect: page.screen.done
            }
        ]
    }

    component Part: Loader {
        width: parent ? parent.width : 0
        visible: active
    }

    onTwoColumnsChanged: arrange()
    Component.onCompleted: if (twoColumns) arrange()

    // The parts move to their columns, so that they keep their state. A column shows its items in the order in which
    // they came, and Tab follows it.
    function arrange() {
        const focused = Window.activeFocusItem
        forgetPlace()
        for (const [part, place] of twoColumns ? [[controls, left], [sites, left], [tabs, right], [filter, right], [activity, right]]
                                               : [[tabs, top], [filter, top], [controls, below], [activity, below], [sites, below]]) {
            part.parent = place
        }
        if (focused && isWithin(focused)) {
            focused.forceActiveFocus()
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

    // In one column the controls stand around the activity of the tab "Real-Time". In two they stand at the left,
    // whatever the tab.
    Item {
        id: parts

        readonly property real columnWidth: (page.contentWidth - Theme.section) / 2

        implicitHeight: Math.max(1, page.twoColumns ? Math.max(left.height, right.height) : only.height)
        Layout.fillWidth: true

        Column {
            id: only
            width: page.contentWidth
            visible: !page.twoColumns
            spacing: Theme.gap

            Column {
                id: top
                width: page.contentWidth
                spacing: Theme.gap

                SegmentedTabs {
                    id: tabs
                    width: parent ? parent.width : 0
                    focus: true
                    options: page.screen.tabs
                    onChosen: option => page.screen.selectedTab = option
                }
                FilterPlace {
                    id: filter
                    width: parent ? parent.width : 0
                    screen: page.screen
                }
            }
            Column {
                id: below
                width: page.contentWidth
                spacing: Theme.between

                Part {
                    id: controls
                    active: page.showsControls
                    sourceComponent: ChildControls { screen: page.screen } // qmllint disable unqualified
                }
                Part {
                    id: activity
                    sourceComponent: ({ "Real-Time": realTime, "Sites Blocked": sitesBlocked,
                                        "Sites Allowed": sitesAllowed })[page.screen.selectedTab]
                }
                Part {
                    id: sites
                    active: page.showsControls
                    sourceComponent: ChildSites { screen: page.screen } // qmllint disable unqualified
                }
            }
        }
        Column {
            id: left
            anchors.left: parts.left
            width: parts.columnWidth
            visible: page.twoColumns
            spacing: Theme.between
        }
        Column {
            id: right
            anchors.right: parts.right
            width: parts.columnWidth
            visible: page.twoColumns
            spacing: Theme.gap
        }
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
