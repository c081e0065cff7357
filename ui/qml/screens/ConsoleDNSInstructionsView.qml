import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    centered: true
    bar: NavigationBar {
        title: page.screen.title
        trailing: TextLink {
            text: page.screen.doneTitle
            strong: true
            effect: page.screen.done
        }
    }

    EmptyState {
        symbol: "gamecontroller.fill"
        text: page.screen.text
        Layout.fillWidth: true
    }
}
