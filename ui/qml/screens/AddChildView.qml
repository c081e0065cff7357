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
    }

    GroupedSection {
        header: page.screen.section
        footer: page.screen.footer

        FieldRow {
            first: true
            focus: true
            placeholderText: page.screen.nameLabel
            value: page.screen.name
            onEdited: text => page.screen.name = text
            onAccepted: year.forceActiveFocus()
        }
        FieldRow {
            id: year
            placeholderText: page.screen.birthYearLabel
            inputMethodHints: Qt.ImhDigitsOnly
            value: page.screen.birthYear
            onEdited: text => page.screen.birthYear = text
            onAccepted: page.screen.createChildProfile.trigger()
        }
    }
    PrimaryButton {
        text: page.screen.createTitle
        symbol: "person.badge.plus"
        effect: page.screen.createChildProfile
        spinning: page.screen.isLoading
        Layout.fillWidth: true
        Layout.topMargin: Theme.within
    }

    ErrorAlert { screen: page.screen }
}
