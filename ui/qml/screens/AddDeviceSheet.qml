import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    topSpace: Theme.section
    spacing: Theme.gap
    bar: NavigationBar {
        title: page.screen.title
        leading: TextLink {
            text: page.screen.cancelTitle
            effect: page.screen.cancel
        }
    }

    Label {
        text: page.screen.heading
        font: Theme.title
        maximumLineCount: 4
        elide: Text.ElideRight
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
        Layout.bottomMargin: Theme.within
    }
    ChoiceCard {
        focus: true
        symbol: page.screen.phoneIcon
        text: page.screen.phoneTitle
        detail: page.screen.phoneText
        effect: page.screen.addPhone
        Layout.fillWidth: true
    }
    ChoiceCard {
        symbol: page.screen.consoleIcon
        text: page.screen.consoleTitle
        detail: page.screen.consoleText
        from: Theme.tint("systemPurple")
        to: Qt.darker(Theme.tint("systemPurple"), 1.3)
        effect: page.screen.addConsole
        Layout.fillWidth: true
    }
}
