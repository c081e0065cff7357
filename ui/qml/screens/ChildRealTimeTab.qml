import QtQuick
import QtQuick.Layouts
import Quillmar

// The sites that a child visited in the last minute.
ColumnLayout {
    id: tab

    required property var screen

    spacing: Theme.between

    SectionTitle {
        text: tab.screen.recentTitle
        busy: tab.screen.isLoadingRecentLogs
        caption: tab.screen.showsRecentCaption ? tab.screen.swipeToAllowText : ""
    }
    Label {
        text: tab.screen.recentHelp
        font: Theme.footnote
        color: Theme.secondaryText
        Layout.fillWidth: true
    }
    RowGround {
        id: recent
        model: tab.screen.shownRecentSites
        placeholder: noRecent

        SiteRow {
            required property var modelData
            required property int index

            row: modelData
            part: tab.screen.filterText // qmllint disable unqualified
            first: index === 0
            title: modelData.site
            time: modelData.timeText
            badge: modelData.badge ?? ""
            badgeTint: Theme.tint(modelData.badgeColor)
            badgeInk: Theme.ink(modelData.badgeColor)
            effect: modelData.allow
        }
    }
    QuietNote {
        id: noRecent
        visible: recent.count === 0
        text: tab.screen.noRecentMatch ?? tab.screen.noRecentText
    }
    SecondaryButton {
        symbol: tab.screen.allActivityIcon
        text: tab.screen.allActivityTitle
        effect: tab.screen.seeAllActivity
        Layout.fillWidth: true
    }
}
