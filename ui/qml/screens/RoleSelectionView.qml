pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Quillmar

FocusScope {
    id: view

    required property var screen
    property bool entered: false

    Component.onCompleted: entered = true

    Page {
        id: page

        anchors.fill: parent
        focus: view.screen.showsCards
        enabled: view.screen.showsCards
        opacity: view.screen.showsCards ? 1 : 0
        visible: opacity > 0
        tinted: true
        centered: true
        maximumWidth: regular ? 720 : Theme.contentWidth
        spacing: 0

        Behavior on opacity { NumberAnimation { duration: Theme.rerouting; easing.type: Easing.InOutQuad } }

        Logo {
            size: 96
            scale: view.entered || Theme.reducedMotion ? view.screen.logoScale : 0.8
            opacity: view.entered ? view.screen.logoOpacity : 0
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: 20
            Behavior on scale { NumberAnimation { duration: 600; easing.type: Easing.OutBack } }
            Behavior on opacity { NumberAnimation { duration: 400 } }
        }
        Label {
            text: view.screen.welcome
            font: Theme.largeTitle
            lineHeight: 1.15
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }
        Label {
            text: view.screen.tagline
            color: Theme.secondaryText
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
        }
        Label {
            text: view.screen.question
            font: Theme.headline
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Layout.topMargin: 36
            Layout.bottomMargin: Theme.gap
        }
        EntryColumn {
            restingOpacity: view.screen.cardsOpacity
            restingOffset: view.screen.cardsOffset

            GridLayout {
                columns: page.regular ? 2 : 1
                columnSpacing: 20
                rowSpacing: Theme.gap
                Layout.fillWidth: true

                Repeater {
                    model: view.screen.cards
                    ChoiceCard {
                        required property var modelData
                        required property int index

                        horizontal: !page.regular
                        focus: index === 0
                        symbol: modelData.icon
                        text: modelData.title
                        detail: modelData.subtitle
                        from: Theme.tint(modelData.gradientColors.at(0))
                        to: Theme.tint(modelData.gradientColors.at(1))
                        effect: modelData.action
                        onDownChanged: modelData.isPressed = down
                        Layout.fillWidth: true
                        Layout.fillHeight: true
                        Layout.preferredWidth: 1
                    }
                }
            }
        }
        RowLayout {
            spacing: Theme.within
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: 28

            Symbol {
                implicitWidth: 18
                implicitHeight: 18
                name: view.screen.noteIcon
                color: Theme.secondaryText
                Layout.alignment: Qt.AlignTop
            }
            Label {
                text: view.screen.note
                font: Theme.callout
                color: Theme.secondaryText
                Layout.maximumWidth: page.contentWidth - 26
            }
        }
    }

    ScreenHost {
        anchors.fill: parent
        focus: !view.screen.showsCards
        screen: view.screen.countrySelection
    }
}
