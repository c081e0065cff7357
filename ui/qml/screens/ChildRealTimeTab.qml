import QtQuick
import QtQuick.Layouts
import Quillmar

// A child's devices, its policy and the sites of the last minute.
ColumnLayout {
    id: tab

    required property var screen

    spacing: Theme.between

    SectionTitle { text: tab.screen.devicesTitle }
    RowGround {
        id: devices
        model: tab.screen.deviceRows
        placeholder: noDevices

        DeviceSwipeRow {
            id: device

            required property var modelData
            required property int index

            row: modelData
            first: index === 0
            detail: modelData.lastSeenText
            tint: Theme.tint(modelData.iconColor)
            effect: modelData.unlink
            actionTitle: modelData.unlinkTitle
            actionSymbol: modelData.unlinkIcon

            OnlineDot {
                // The row's description contains it.
                Accessible.ignored: true
                online: device.modelData.isOnline
            }
        }
    }
    QuietNote {
        id: noDevices
        visible: devices.count === 0
        text: tab.screen.noDevicesText
    }
    SecondaryButton {
        symbol: tab.screen.linkDeviceIcon
        text: tab.screen.linkDeviceTitle
        effect: tab.screen.linkDevice
        Layout.fillWidth: true
    }

    SectionTitle { text: tab.screen.controlsTitle }
    Card {
        spacing: Theme.between
        Layout.fillWidth: true

        Toggle {
            text: tab.screen.blockTitle
            checked: tab.screen.isBlocked
            onToggled: tab.screen.isBlocked = checked
            Layout.fillWidth: true
            Accessible.description: tab.screen.blockCaption
        }
        Label {
            text: tab.screen.blockCaption
            font: Theme.footnote
            color: Theme.cardSecondaryText
            Layout.fillWidth: true
            Layout.topMargin: -Theme.between
            Accessible.ignored: true
        }
        Banner {
            visible: tab.screen.blockWarning !== null
            text: tab.screen.blockWarning ?? ""
            symbol: tab.screen.blockWarningIcon
            Layout.fillWidth: true
        }
    }

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
        model: tab.screen.recentActivityRows
        placeholder: noRecent

        SiteRow {
            required property var modelData
            required property int index

            row: modelData
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
        text: tab.screen.noRecentText
    }
    SecondaryButton {
        symbol: tab.screen.allActivityIcon
        text: tab.screen.allActivityTitle
        effect: tab.screen.seeAllActivity
        Layout.fillWidth: true
    }

    SectionTitle {
        text: tab.screen.allowedTitle
        count: tab.screen.allowedCount
    }
    PolicySites {
        rows: tab.screen.allowedRows
        emptyText: tab.screen.noAllowedText
        symbol: "checkmark.circle.fill"
        tint: Theme.green
    }
    SiteField {
        placeholder: tab.screen.allowedPlaceholder
        value: tab.screen.newDomain
        symbol: tab.screen.addIcon
        effect: tab.screen.addAllowedSite
        onEdited: text => tab.screen.newDomain = text
    }

    SectionTitle {
        text: tab.screen.blockedTitle
        count: tab.screen.blockedCount
        caption: tab.screen.blockedCaption
    }
    PolicySites {
        rows: tab.screen.blockedRows
        emptyText: tab.screen.noBlockedText
        symbol: "nosign"
        tint: Theme.red
    }
    SiteField {
        placeholder: tab.screen.blockedPlaceholder
        value: tab.screen.newBlockedDomain
        symbol: tab.screen.addIcon
        effect: tab.screen.addBlockedSite
        onEdited: text => tab.screen.newBlockedDomain = text
    }

    SectionTitle {
        text: tab.screen.screenTimeTitle
        badge: tab.screen.screenTimeBadge
        caption: tab.screen.screenTimeText
    }
    GroupedSection {
        opacity: 0.6

        ListRow {
            first: true
            symbol: "moon.fill"
            tint: Theme.offline
            title: tab.screen.screenTimeRowTitle
            value: tab.screen.screenTimeRowValue
        }
    }

    DestructiveButton {
        symbol: tab.screen.deleteProfileIcon
        text: tab.screen.deleteProfileTitle
        effect: tab.screen.deleteProfile
        Layout.minimumHeight: Theme.primaryTarget
        Layout.fillWidth: true
        Layout.topMargin: Theme.section
    }
}
