import QtQuick
import QtQuick.Layouts
import Quillmar

// The sites that were blocked for a child.
ColumnLayout {
    id: tab

    required property var screen

    spacing: Theme.between

    ChipRow {
        options: tab.screen.blockedFilters
        onChosen: option => tab.screen.blockedTimeFilter = option
        Layout.fillWidth: true
    }
    SectionTitle {
        text: tab.screen.blockedLogsTitle
        busy: tab.screen.isLoadingBlockedLogs
        caption: tab.screen.swipeToAllowText
        Layout.topMargin: 0
    }
    RowGround {
        id: sites
        model: tab.screen.shownBlockedSites
        placeholder: noSites

        SiteRow {
            required property var modelData
            required property int index

            row: modelData
            part: tab.screen.filterText // qmllint disable unqualified
            first: index === 0
            title: modelData.site
            time: modelData.timeText
            badge: modelData.badge ?? ""
            badgeSymbol: modelData.badgeIcon
            badgeTint: Theme.tint(modelData.badgeColor)
            badgeInk: Theme.ink(modelData.badgeColor)
            effect: modelData.allow
        }
    }
    QuietNote {
        id: noSites
        visible: sites.count === 0
        heading: tab.screen.noBlockedMatch ?? tab.screen.noBlockedLogsHeading
        text: tab.screen.noBlockedMatch === null ? tab.screen.noBlockedLogsText : ""
    }
}
