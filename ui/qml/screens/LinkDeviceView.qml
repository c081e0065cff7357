import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    topSpace: Theme.gap
    spacing: Theme.gap
    bar: NavigationBar {
        title: page.screen.title
        leading: TextLink {
            text: page.screen.cancelTitle
            effect: page.screen.cancel
        }
        trailing: IconButton {
            visible: page.screen.openFilter.enabled
            text: page.screen.openFilterTitle
            symbol: "magnifyingglass"
            symbolSize: 22
            effect: page.screen.openFilter
        }
    }

    SectionTitle {
        text: page.screen.newSection
        Layout.topMargin: 0
    }
    ChoiceCard {
        focus: true
        symbol: page.screen.phoneIcon
        text: page.screen.phoneTitle
        detail: page.screen.phoneText
        padding: Theme.gap
        effect: page.screen.addPhone
        Layout.fillWidth: true
    }
    ChoiceCard {
        symbol: page.screen.consoleIcon
        text: page.screen.consoleTitle
        detail: page.screen.consoleText
        from: Theme.tint("systemPurple")
        to: Qt.darker(Theme.tint("systemPurple"), 1.3)
        padding: Theme.gap
        effect: page.screen.addConsole
        Layout.fillWidth: true
    }

    SectionTitle { text: page.screen.existingSection }
    FilterPlace { screen: page.screen }
    RowLayout {
        visible: page.screen.content === "loading"
        spacing: Theme.between
        Layout.alignment: Qt.AlignHCenter

        Spinner {}
        Label {
            text: page.screen.loadingText
            font: Theme.callout
            color: Theme.secondaryText
            lineHeight: 1
        }
    }
    RowGround {
        id: devices
        visible: page.screen.content === "list"
        model: page.screen.shownDevices
        placeholder: noDevices

        DeviceSwipeRow {
            id: device

            required property var modelData
            required property int index

            row: modelData
            part: page.screen.filterText // qmllint disable unqualified
            first: index === 0
            detail: modelData.deviceTypeLabel
            pressable: true
            effect: modelData.remove
            actionTitle: modelData.removeTitle
            actionSymbol: modelData.removeIcon
            endSpace: removal.width
            controls: IconButton {
                id: removal
                anchors.right: parent.right
                anchors.rightMargin: 4
                anchors.verticalCenter: parent.verticalCenter
                text: device.modelData.removeTitle + " " + device.name
                symbol: device.modelData.removeIcon
                symbolSize: 20
                ink: Theme.dangerText
                effect: device.modelData.remove
            }
        }
    }
    QuietNote {
        id: noDevices
        visible: page.screen.content === "empty" || page.screen.noDeviceMatch !== null
        text: page.screen.noDeviceMatch ?? page.screen.emptyText
    }

    Alert {
        shown: page.screen.showDeleteConfirmation
        title: page.screen.deletionTitle
        message: page.screen.deletionText

        AlertButton {
            text: page.screen.cancelTitle
            role: AlertButton.Cancel
            onClicked: page.screen.cancelDeletion.trigger()
        }
        AlertButton {
            text: page.screen.deleteTitle
            role: AlertButton.Destructive
            onClicked: page.screen.deleteSelectedDevice.trigger()
        }
    }
    ErrorAlert { screen: page.screen }
}
