import QtQuick
import QtQuick.Layouts
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
        ListRow {
            first: true
            symbol: "person.fill"
            title: page.screen.nameTitle
            value: page.screen.name
        }
        ListRow {
            symbol: "envelope.fill"
            title: page.screen.emailTitle
            value: page.screen.email
        }
        ListRow {
            symbol: "key.fill"
            title: page.screen.roleTitle
            value: page.screen.role
        }
    }
    GroupedSection {
        header: page.screen.permissionsSection

        Repeater {
            model: page.screen.permissions
            ToggleRow {
                required property var modelData
                required property int index

                first: index === 0
                text: modelData.title
                on: modelData.isOn
                effect: modelData.flip
            }
        }
    }
    DestructiveButton {
        symbol: "trash.fill"
        text: page.screen.removeTitle
        effect: page.screen.removeFromFamily
        Layout.minimumHeight: Theme.primaryTarget
        Layout.fillWidth: true
        Layout.topMargin: Theme.within
    }
}
