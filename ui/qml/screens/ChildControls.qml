import QtQuick
import QtQuick.Layouts
import Quillmar

// A child's devices, and the control over all of them.
ColumnLayout {
    id: section

    required property var screen

    spacing: Theme.between

    SectionTitle { text: section.screen.devicesTitle }
    RowGround {
        id: devices
        model: section.screen.shownDevices
        placeholder: noDevices

        DeviceSwipeRow {
            id: device

            required property var modelData
            required property int index

            row: modelData
            part: section.screen.filterText // qmllint disable unqualified
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
        text: section.screen.noDeviceMatch ?? section.screen.noDevicesText
    }
    SecondaryButton {
        symbol: section.screen.linkDeviceIcon
        text: section.screen.linkDeviceTitle
        effect: section.screen.linkDevice
        Layout.fillWidth: true
    }

    SectionTitle { text: section.screen.controlsTitle }
    Card {
        spacing: Theme.between
        Layout.fillWidth: true

        Toggle {
            text: section.screen.blockTitle
            checked: section.screen.isBlocked
            onToggled: section.screen.isBlocked = checked
            Layout.fillWidth: true
            Accessible.description: section.screen.blockCaption
        }
        Label {
            text: section.screen.blockCaption
            font: Theme.footnote
            color: Theme.cardSecondaryText
            Layout.fillWidth: true
            Layout.topMargin: -Theme.between
            Accessible.ignored: true
        }
        Banner {
            visible: section.screen.blockWarning !== null
            text: section.screen.blockWarning ?? ""
            symbol: section.screen.blockWarningIcon
            Layout.fillWidth: true
        }
    }
}
