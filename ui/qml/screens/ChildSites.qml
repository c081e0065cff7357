import QtQuick
import QtQuick.Layouts
import Quillmar

// The sites that are always allowed or blocked for a child, and what concerns the child as a whole.
ColumnLayout {
    id: sites

    required property var screen

    spacing: Theme.between

    SectionTitle {
        text: sites.screen.allowedTitle
        count: sites.screen.allowedCount
    }
    PolicySites {
        rows: sites.screen.shownAllowedPolicy
        part: sites.screen.filterText
        emptyText: sites.screen.noAllowedPolicyMatch ?? sites.screen.noAllowedText
        symbol: "checkmark.circle.fill"
        tint: Theme.green
    }
    SiteField {
        placeholder: sites.screen.allowedPlaceholder
        value: sites.screen.newDomain
        symbol: sites.screen.addIcon
        effect: sites.screen.addAllowedSite
        onEdited: text => sites.screen.newDomain = text
    }

    SectionTitle {
        text: sites.screen.blockedTitle
        count: sites.screen.blockedCount
        caption: sites.screen.blockedCaption
    }
    PolicySites {
        rows: sites.screen.shownBlockedPolicy
        part: sites.screen.filterText
        emptyText: sites.screen.noBlockedPolicyMatch ?? sites.screen.noBlockedText
        symbol: "nosign"
        tint: Theme.red
    }
    SiteField {
        placeholder: sites.screen.blockedPlaceholder
        value: sites.screen.newBlockedDomain
        symbol: sites.screen.addIcon
        effect: sites.screen.addBlockedSite
        onEdited: text => sites.screen.newBlockedDomain = text
    }

    SectionTitle {
        text: sites.screen.screenTimeTitle
        badge: sites.screen.screenTimeBadge
        caption: sites.screen.screenTimeText
    }
    GroupedSection {
        opacity: 0.6

        ListRow {
            first: true
            symbol: "moon.fill"
            tint: Theme.offline
            title: sites.screen.screenTimeRowTitle
            value: sites.screen.screenTimeRowValue
        }
    }

    DestructiveButton {
        symbol: sites.screen.deleteProfileIcon
        text: sites.screen.deleteProfileTitle
        effect: sites.screen.deleteProfile
        Layout.minimumHeight: Theme.primaryTarget
        Layout.fillWidth: true
        Layout.topMargin: Theme.section
    }
}
