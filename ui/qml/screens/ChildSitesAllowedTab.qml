import QtQuick
import QtQuick.Layouts
import Quillmar

// The sites that a child has visited, and those that a parent has always allowed.
ColumnLayout {
    id: tab

    required property var screen

    spacing: Theme.between

    ChipRow {
        options: tab.screen.allowedFilters
        onChosen: option => tab.screen.allowedTimeFilter = option
        Layout.fillWidth: true
    }
    SectionTitle {
        text: tab.screen.allowedLogsTitle
        busy: tab.screen.isLoadingAllowedLogs
        caption: tab.screen.swipeToBlockText
        Layout.topMargin: 0
    }
    RowGround {
        id: sites
        model: tab.screen.shownVisitedSites
        placeholder: noSites

        SiteRow {
            required property var modelData
            required property int index

            row: modelData
            part: tab.screen.filterText // qmllint disable unqualified
            first: index === 0
            title: modelData.site
            time: modelData.timeText
            effect: modelData.block
            destructive: true
        }
    }
    QuietNote {
        id: noSites
        visible: sites.count === 0
        heading: tab.screen.noVisitedMatch ?? tab.screen.noAllowedLogsHeading
        text: tab.screen.noVisitedMatch === null ? tab.screen.noAllowedLogsText : ""
    }

    SectionTitle {
        text: tab.screen.permanentTitle
        count: tab.screen.allowedCount
        caption: permanent.count > 0 ? tab.screen.permanentCaption : ""
    }
    RowGround {
        id: permanent
        model: tab.screen.shownPermanentSites
        placeholder: noPermanent

        SiteRow {
            required property var modelData
            required property int index

            row: modelData
            part: tab.screen.filterText // qmllint disable unqualified
            first: index === 0
            title: modelData.domain
            effect: modelData.remove
            destructive: true
            stripAtEnd: true
            key: Qt.Key_Delete
        }
    }
    QuietNote {
        id: noPermanent
        visible: permanent.count === 0
        heading: tab.screen.noPermanentMatch ?? tab.screen.noPermanentHeading
        text: tab.screen.noPermanentMatch === null ? tab.screen.noPermanentText : ""
    }
    SiteField {
        placeholder: tab.screen.allowedPlaceholder
        value: tab.screen.newDomain
        symbol: tab.screen.addIcon
        effect: tab.screen.addAllowedSite
        onEdited: text => tab.screen.newDomain = text
    }
}
