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

    Stage {
        shown: page.screen.stage === "code"
        first: code.box
        spacing: Theme.gap

        SymbolTile {
            symbol: page.screen.headerIcon
            size: 72
            radius: 36
            Layout.alignment: Qt.AlignHCenter
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
        LabelledField {
            id: code
            box.focus: true
            title: page.screen.inviteCodeTitle
            placeholder: page.screen.inviteCodePlaceholder
            code: true
            inputMethodHints: Qt.ImhUppercaseOnly | Qt.ImhNoPredictiveText
            value: page.screen.inviteCode
            onEdited: text => page.screen.inviteCode = text
            onAccepted: page.screen.validateCode.trigger()
        }
        Banner {
            visible: page.screen.warning !== null
            text: page.screen.warning ?? ""
            symbol: page.screen.warningIcon
            Layout.fillWidth: true
        }
        PrimaryButton {
            text: page.screen.validateTitle
            spinning: page.screen.isValidating
            effect: page.screen.validateCode
            Layout.fillWidth: true
        }
        LabelledDivider {
            text: page.screen.orText
            Layout.fillWidth: true
        }
        SecondaryButton {
            symbol: page.screen.scanIcon
            text: page.screen.scanTitle
            effect: page.screen.scanQRCode
            Layout.minimumHeight: Theme.primaryTarget
            Layout.fillWidth: true
        }
    }

    Stage {
        shown: page.screen.stage === "account"
        first: name.box
        spacing: Theme.gap

        Card {
            color: Theme.alpha(Theme.green, Theme.dark ? 0.16 : 0.12)
            Layout.fillWidth: true

            RowLayout {
                spacing: Theme.between
                Layout.fillWidth: true

                Symbol {
                    name: page.screen.validIcon
                    color: Theme.green
                    Layout.preferredWidth: 28
                    Layout.preferredHeight: 28
                    Layout.alignment: Qt.AlignTop
                }
                ColumnLayout {
                    spacing: 3
                    Layout.fillWidth: true

                    Label {
                        text: page.screen.validTitle
                        font: Theme.headline
                        lineHeight: 1.1
                        Layout.fillWidth: true
                        Accessible.role: Accessible.Heading
                    }
                    Label {
                        visible: page.screen.familyLine !== null
                        text: page.screen.familyLine ?? ""
                        font: Theme.callout
                        maximumLineCount: 4
                        elide: Text.ElideRight
                        lineHeight: 1.2
                        Layout.fillWidth: true
                    }
                    Label {
                        visible: page.screen.inviterLine !== null
                        text: page.screen.inviterLine ?? ""
                        font: Theme.callout
                        maximumLineCount: 4
                        elide: Text.ElideRight
                        lineHeight: 1.2
                        Layout.fillWidth: true
                    }
                }
                TextLink {
                    text: page.screen.changeTitle
                    effect: page.screen.changeCode
                    Layout.alignment: Qt.AlignTop
                }
            }
        }
        Label {
            text: page.screen.accountHeading
            font: Theme.title
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
            Accessible.role: Accessible.Heading
        }
        LabelledField {
            id: name
            title: page.screen.displayNameTitle
            placeholder: page.screen.displayNamePlaceholder
            value: page.screen.displayName
            onEdited: text => page.screen.displayName = text
            onAccepted: email.box.forceActiveFocus()
        }
        LabelledField {
            id: email
            title: page.screen.emailTitle
            placeholder: page.screen.emailPlaceholder
            inputMethodHints: Qt.ImhEmailCharactersOnly | Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
            value: page.screen.email
            onEdited: text => page.screen.email = text
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
        SecureField {
            id: confirmation
            title: page.screen.confirmPasswordTitle
            placeholder: page.screen.confirmPasswordPlaceholder
            value: page.screen.confirmPassword
            onEdited: text => page.screen.confirmPassword = text
            onAccepted: page.screen.join.trigger()
        }
        Banner {
            visible: page.screen.showsPasswordMatch
            text: page.screen.passwordMatchText
            symbol: page.screen.passwordMatchIcon
            tint: Theme.tint(page.screen.passwordMatchColor)
            ink: Theme.ink(page.screen.passwordMatchColor)
            Layout.fillWidth: true
        }
        PrimaryButton {
            text: page.screen.joinTitle
            spinning: page.screen.isJoining
            effect: page.screen.join
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
        }
    }

    ErrorAlert { screen: page.screen }
}
