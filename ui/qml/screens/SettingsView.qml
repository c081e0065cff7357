import QtQuick
import Quillmar

Page {
    id: page

    required property var screen

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
        header: page.screen.accountSection

        PersonRow {
            first: true
            letters: page.screen.initials
            name: page.screen.displayName
            detail: page.screen.email
        }
    }
    GroupedSection {
        header: page.screen.familySection

        ActionRow {
            first: true
            symbol: page.screen.familyMembersIcon
            text: page.screen.familyMembersTitle
            ink: Theme.text
            chevron: true
            effect: page.screen.openFamilyMembers
        }
    }
    GroupedSection {
        header: page.screen.appearanceSection

        Repeater {
            model: page.screen.appearanceRows
            ChoiceRow {
                required property var modelData
                required property int index

                first: index === 0
                symbol: modelData.icon
                text: modelData.title
                chosen: modelData.isSelected
                effect: modelData.select
            }
        }
    }
    GroupedSection {
        header: page.screen.aboutSection

        ListRow {
            first: true
            symbol: "info.circle.fill"
            tint: Theme.offline
            title: page.screen.versionTitle
            value: page.screen.version
        }
    }
    GroupedSection {
        header: page.screen.deletionSection
        footer: page.screen.deletionFooter

        ActionRow {
            first: true
            symbol: page.screen.deleteAccountIcon
            tint: Theme.red
            ink: Theme.dangerText
            text: page.screen.deleteAccountTitle
            effect: page.screen.deleteAccount
        }
    }

    Alert {
        shown: page.screen.showDeleteAccountConfirmation
        title: page.screen.confirmationTitle
        message: page.screen.confirmationText

        AlertButton {
            text: page.screen.cancelTitle
            role: AlertButton.Cancel
            onClicked: page.screen.cancelDeletion.trigger()
        }
        AlertButton {
            text: page.screen.continueTitle
            role: AlertButton.Destructive
            onClicked: page.screen.continueDeletion.trigger()
        }
    }
    Alert {
        shown: page.screen.showDeleteError
        title: page.screen.errorTitle
        message: page.screen.deleteAccountError

        AlertButton {
            text: page.screen.okTitle
            onClicked: page.screen.dismissDeleteError.trigger()
        }
    }
}
