import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    maximumWidth: 440
    spacing: Theme.gap
    bar: NavigationBar {
        title: page.screen.title
        leading: TextLink {
            text: page.screen.cancelTitle
            effect: page.screen.cancel
        }
    }

    SymbolTile {
        symbol: page.screen.warningIcon
        tint: Theme.red
        size: 80
        radius: 40
        Layout.alignment: Qt.AlignHCenter
        Layout.topMargin: Theme.gap
    }
    Label {
        text: page.screen.heading
        font: Theme.title
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
        Accessible.role: Accessible.Heading
    }
    Label {
        text: page.screen.explanation
        font: Theme.callout
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
        Layout.topMargin: -Theme.within
    }
    SecureField {
        box.focus: true
        placeholder: page.screen.passwordPlaceholder
        value: page.screen.deleteAccountPassword
        onEdited: text => page.screen.deleteAccountPassword = text
    }
    RowLayout {
        visible: page.screen.isDeletingAccount
        spacing: Theme.between
        Layout.alignment: Qt.AlignHCenter
        Layout.minimumHeight: Theme.primaryTarget

        Spinner {}
        Label {
            text: page.screen.deletingText
            color: Theme.secondaryText
            lineHeight: 1
        }
    }
    DestructiveButton {
        visible: !page.screen.isDeletingAccount
        symbol: "trash.fill"
        text: page.screen.deleteTitle
        effect: page.screen.deleteMyAccount
        Layout.minimumHeight: Theme.primaryTarget
        Layout.fillWidth: true
    }
}
