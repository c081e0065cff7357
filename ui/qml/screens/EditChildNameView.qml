import QtQuick
import Quillmar

Page {
    id: page

    required property var screen

    topSpace: Theme.gap
    bar: NavigationBar {
        title: page.screen.title
        leading: TextLink {
            text: page.screen.cancelTitle
            effect: page.screen.cancel
        }
        trailing: TextLink {
            text: page.screen.saveTitle
            strong: true
            effect: page.screen.save
        }
    }

    GroupedSection {
        header: page.screen.nameSection

        FieldRow {
            first: true
            focus: true
            placeholderText: page.screen.nameLabel
            value: page.screen.name
            onEdited: text => page.screen.name = text
            onAccepted: page.screen.save.trigger()
        }
    }
}
