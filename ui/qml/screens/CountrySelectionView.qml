import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen


    centered: true
    tinted: true
    spacing: 0
    bar: NavigationBar {
        color: "transparent"
        leading: BackButton {
            text: page.screen.backTitle
            effect: page.screen.goBack
        }
    }

    EntryColumn {
        spacing: 0
        restingOpacity: page.screen.contentOpacity
        restingOffset: page.screen.contentOffset
        wait: 100

        SymbolTile {
            symbol: page.screen.globeIcon
            size: 88
            radius: 44
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: 20
        }
        Label {
            text: page.screen.heading
            font: Theme.largeTitle
            lineHeight: 1.15
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }
        Label {
            text: page.screen.explanation
            color: Theme.secondaryText
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
            Layout.bottomMargin: 32
        }
        ColumnLayout {
            spacing: Theme.between
            Layout.fillWidth: true

            Repeater {
                model: page.screen.regionCards
                SelectionCard {
                    required property var modelData
                    required property int index

                    focus: index === 0
                    picture: modelData.flag
                    text: modelData.name
                    selected: modelData.isSelected
                    effect: modelData.action
                    onDownChanged: modelData.isPressed = down
                    Layout.fillWidth: true
                }
            }
        }
        PrimaryButton {
            text: page.screen.continueTitle
            effect: page.screen.confirmRegion
            Layout.fillWidth: true
            Layout.topMargin: 28
        }
    }
}
