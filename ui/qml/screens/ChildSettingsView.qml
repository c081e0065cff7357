import QtQuick
import Quillmar

Page {
    id: page

    required property var screen
    readonly property var notices: Notices.model

    topSpace: Theme.within
    spacing: Theme.gap
    bar: NavigationBar {
        title: page.screen.title
        trailing: TextLink {
            text: page.screen.doneTitle
            strong: true
            effect: page.screen.done
        }
    }

    GroupedSection {
        header: page.screen.deviceSection

        ListRow {
            first: true
            symbol: "number"
            title: page.screen.deviceIdTitle
            value: page.screen.deviceId
        }
        ListRow {
            symbol: "checkmark"
            tint: Theme.green
            title: page.screen.statusTitle
            value: page.screen.status
        }
        ListRow {
            symbol: "wifi"
            tint: page.screen.isConnectedToServer ? Theme.green : Theme.orange
            title: page.screen.serverTitle
            value: page.screen.serverConnection
        }
    }

    GroupedSection {
        header: page.screen.protectionSection

        ListRow {
            first: true
            symbol: page.screen.vpnStatusIcon
            tint: Theme.tint(page.screen.vpnStatusColor)
            title: page.screen.vpnStatusTitle
            value: page.screen.vpnStatus
        }
        ListRow {
            symbol: "gearshape.fill"
            tint: Theme.offline
            title: page.screen.configurationTitle
            value: page.screen.configuration
        }
        ActionRow {
            visible: page.screen.reconnectTunnel.enabled
            symbol: "arrow.clockwise"
            text: page.screen.reconnectTitle
            effect: page.screen.reconnectTunnel
        }
        ActionRow {
            visible: page.screen.enableProtection.enabled
            symbol: "shield.fill"
            text: page.screen.enableTitle
            effect: page.screen.enableProtection
        }
        ListRow {
            symbol: "network"
            title: page.screen.endpointTitle
            value: page.screen.dohEndpoint
            code: true
        }
        ListRow {
            visible: page.screen.dohBaseUrl !== null
            symbol: "link"
            title: page.screen.baseUrlTitle
            value: page.screen.dohBaseUrl ?? ""
            code: true
        }
        ActionRow {
            symbol: "doc.on.doc.fill"
            text: page.screen.copyTitle
            effect: page.screen.copyDoHEndpoint
        }
    }

    GroupedSection {
        header: page.screen.actionsSection

        ActionRow {
            first: true
            symbol: "arrow.triangle.2.circlepath"
            text: page.screen.forceSyncTitle
            effect: page.screen.forceSync
        }
        ActionRow {
            symbol: "trash.fill"
            tint: Theme.red
            ink: Theme.dangerText
            text: page.screen.resetTitle
            effect: page.screen.resetEnrollment
        }
    }

    GroupedSection {
        visible: page.notices !== null
        header: page.notices?.section ?? ""
        footer: page.notices?.caption ?? ""

        ToggleRow {
            first: true
            text: page.notices?.title ?? ""
            on: page.notices?.isOn ?? false
            effect: page.notices?.flip ?? null
        }
    }

    Alert {
        shown: page.screen.showResetConfirmation
        title: page.screen.confirmationTitle
        message: page.screen.confirmationText

        AlertButton {
            text: page.screen.cancelTitle
            role: AlertButton.Cancel
            onClicked: page.screen.cancelReset.trigger()
        }
        AlertButton {
            text: page.screen.confirmTitle
            role: AlertButton.Destructive
            onClicked: page.screen.confirmReset.trigger()
        }
    }
}
