import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen
    readonly property bool closable: true

    maximumWidth: 440
    topSpace: 40
    spacing: 0

    EntryColumn {
        spacing: Theme.within
        restingOpacity: page.screen.headerOpacity
        restingOffset: page.screen.headerOffset

        SymbolTile {
            symbol: "person.badge.plus"
            size: 72
            radius: 36
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: Theme.within
        }
        Label {
            text: page.screen.title
            font: Theme.largeTitle
            lineHeight: 1.15
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }
        Label {
            text: page.screen.subtitle
            font: Theme.callout
            color: Theme.secondaryText
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
        }
    }

    EntryColumn {
        spacing: Theme.gap
        restingOpacity: page.screen.formOpacity
        restingOffset: page.screen.formOffset
        wait: 200
        Layout.topMargin: 28

        LabelledField {
            box.focus: true
            title: page.screen.nameTitle
            placeholder: page.screen.namePlaceholder
            value: page.screen.name
            onEdited: text => page.screen.name = text
            onAccepted: email.box.forceActiveFocus()
        }
        LabelledField {
            id: email
            title: page.screen.emailTitle
            placeholder: page.screen.emailPlaceholder
            inputMethodHints: Qt.ImhEmailCharactersOnly | Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
            value: page.screen.email
            onEdited: text => page.screen.email = text
            onAccepted: phone.box.forceActiveFocus()
        }
        LabelledField {
            id: phone
            title: page.screen.phoneTitle
            placeholder: page.screen.phonePlaceholder
            hint: page.screen.phoneHint
            inputMethodHints: Qt.ImhDialableCharactersOnly
            value: page.screen.phone
            onEdited: text => page.screen.phone = text
            onAccepted: password.box.forceActiveFocus()
        }
        SecureField {
            id: password
            title: page.screen.passwordTitle
            placeholder: page.screen.passwordPlaceholder
            value: page.screen.password
            onEdited: text => page.screen.password = text
            onAccepted: confirmation.box.forceActiveFocus()
        }
        StrengthMeter {
            visible: page.screen.showsStrength
            bars: page.screen.strengthBars
            label: page.screen.strengthLabel
            colorName: page.screen.strengthColor
            Layout.fillWidth: true
            Layout.topMargin: -4
        }
        SecureField {
            id: confirmation
            title: page.screen.confirmPasswordTitle
            placeholder: page.screen.confirmPasswordPlaceholder
            value: page.screen.confirmPassword
            onEdited: text => page.screen.confirmPassword = text
            onAccepted: page.screen.createAccount.trigger()
        }
        Banner {
            visible: page.screen.showsMismatch
            text: page.screen.mismatchText
            symbol: page.screen.mismatchIcon
            tint: Theme.red
            ink: Theme.dangerText
            Layout.fillWidth: true
        }
        PrimaryButton {
            text: page.screen.createAccountTitle
            busy: page.screen.isLoading
            effect: page.screen.createAccount
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
        }
        Label {
            text: page.screen.termsText
            font: Theme.footnote
            color: Theme.secondaryText
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
        }
    }

    ErrorAlert { screen: page.screen }
}
