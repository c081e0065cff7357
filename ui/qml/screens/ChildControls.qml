import QtQuick
import QtQuick.Layouts
import Quillmar

// A child's devices, and the control over all of them.
ColumnLayout {
    id: controls

    required property var screen

    spacing: Theme.between

    SectionTitle { text: controls.screen.devicesTitle }
    RowGround {
        id: devices
        model: controls.screen.shownDevices
        placeholder: noDevices

        DeviceSwipeRow {
            id: device

            required property var modelData
            required property int index

            row: modelData
            part: controls.screen.filterText
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
        text: controls.screen.noDeviceMatch ?? controls.screen.noDevicesText
    }
    SecondaryButton {
        symbol: controls.screen.linkDeviceIcon
        text: controls.screen.linkDeviceTitle
        effect: controls.screen.linkDevice
        Layout.fillWidth: true
    }

    SectionTitle { text: controls.screen.controlsTitle }
    Card {
        spacing: Theme.between
        Layout.fillWidth: true

        Toggle {
            text: controls.screen.blockTitle
            checked: controls.screen.isBlocked
            onToggled: controls.screen.isBlocked = checked
            Layout.fillWidth: true
            Accessible.description: controls.screen.blockCaption
        }
        Label {
            text: controls.screen.blockCaption
            font: Theme.footnote
            color: Theme.cardSecondaryText
            Layout.fillWidth: true
            Layout.topMargin: -Theme.between
            Accessible.ignored: true
        }
        Banner {
            visible: controls.screen.blockWarning !== null
            text: controls.screen.blockWarning ?? ""
            symbol: controls.screen.blockWarningIcon
            Layout.fillWidth: true
        }
    }
}
