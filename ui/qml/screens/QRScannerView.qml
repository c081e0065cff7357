import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    centered: true
    maximumWidth: 440
    spacing: Theme.gap
    bar: NavigationBar {
        title: page.screen.title
        leading: TextLink {
            text: page.screen.cancelTitle
            effect: page.screen.cancel
        }
    }

    Card {
        padding: 32
        spacing: Theme.between
        Layout.fillWidth: true

        Item {
            implicitWidth: 180
            implicitHeight: 180
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: Theme.within

            Viewfinder {
                anchors.fill: parent
                color: Theme.blue
            }
            Symbol {
                anchors.centerIn: parent
                width: 88
                height: 88
                name: page.screen.panelIcon
                color: Theme.alpha(Theme.text, 0.4)
            }
        }
        Label {
            text: page.screen.panelTitle
            font: Theme.headline
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }
        Label {
            text: page.screen.panelText
            font: Theme.callout
            color: Theme.cardSecondaryText
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
        }
    }
    Label {
        text: page.screen.manualText
        font: Theme.footnote
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }
}
