import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen
    property bool entered: false

    Component.onCompleted: entered = true

    centered: true
    tinted: true
    maximumWidth: 440
    spacing: 0
    topSpace: 32

    Logo {
        size: 88
        scale: page.entered || Theme.reducedMotion ? page.screen.logoScale : 0.5
        opacity: page.entered ? page.screen.logoOpacity : 0
        Layout.alignment: Qt.AlignHCenter
        Layout.bottomMargin: Theme.gap
        Behavior on scale { SpringMotion { response: 0.6; damping: 0.8 } }
        Behavior on opacity { NumberAnimation { duration: 400 } }
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
        font: Theme.headline
        color: Theme.linkText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
        Layout.topMargin: 4
    }
    Label {
        text: page.screen.tagline
        font: Theme.callout
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
        Layout.topMargin: 4
    }

    EntryColumn {
        spacing: Theme.gap
        restingOpacity: page.screen.formOpacity
        restingOffset: page.screen.formOffset
        wait: 200
        Layout.topMargin: 32

        LabelledField {
            id: email
            box.focus: true
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
            onAccepted: page.screen.signIn.trigger()
        }
        CheckMark {
            text: page.screen.rememberMeTitle
            checked: page.screen.rememberMe
            onToggled: page.screen.rememberMe = checked
        }
        PrimaryButton {
            text: page.screen.signInTitle
            busy: page.screen.isLoading
            effect: page.screen.signIn
            Layout.fillWidth: true
        }
        SecondaryButton {
            visible: page.screen.showsBiometricButton
            symbol: page.screen.biometricIcon
            text: page.screen.biometricTitle
            effect: page.screen.signInWithBiometrics
            Layout.minimumHeight: Theme.primaryTarget
            Layout.fillWidth: true
        }
        LabelledDivider {
            text: page.screen.orText
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
        }
        Flow {
            spacing: 2
            Layout.alignment: Qt.AlignHCenter
            Layout.maximumWidth: page.contentWidth

            Label {
                height: Theme.target
                text: page.screen.signUpQuestion
                font: Theme.callout
                color: Theme.secondaryText
                lineHeight: 1
                verticalAlignment: Text.AlignVCenter
            }
            TextLink {
                text: page.screen.signUpTitle
                strong: true
                effect: page.screen.signUp
            }
        }
        Card {
            spacing: Theme.between
            Layout.fillWidth: true

            Label {
                text: page.screen.joinFamilyQuestion
                font: Theme.callout
                color: Theme.cardSecondaryText
                horizontalAlignment: Text.AlignHCenter
                Layout.fillWidth: true
            }
            SecondaryButton {
                symbol: "person.2.fill"
                text: page.screen.joinFamilyTitle
                effect: page.screen.joinFamily
                Layout.fillWidth: true
            }
        }
    }

    ErrorAlert { screen: page.screen }
}
