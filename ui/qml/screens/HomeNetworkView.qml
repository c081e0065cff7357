import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    centered: screen.content === "loading"
    topSpace: Theme.gap
    spacing: Theme.gap
    bar: NavigationBar {
        title: page.screen.title
        trailing: TextLink {
            text: page.screen.doneTitle
            strong: true
            effect: page.screen.done
        }
    }

    Banner {
        visible: page.screen.showSuccessMessage
        text: page.screen.successMessage
        symbol: page.screen.bannerIcon
        tint: Theme.green
        ink: Theme.positiveText
        Layout.fillWidth: true
    }

    Stage {
        shown: page.screen.content === "loading"

        LargeSpinner {
            text: page.screen.loadingText
            Layout.fillWidth: true
        }
    }

    Stage {
        shown: page.screen.content === "setUp"
        first: setUp
        spacing: Theme.gap

        SymbolTile {
            symbol: page.screen.homeIcon
            size: 88
            radius: 44
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: Theme.within
        }
        Label {
            text: page.screen.heading
            font: Theme.title
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
        }
        GroupedSection {
            ListRow {
                first: true
                symbol: "globe"
                title: page.screen.detectedIPTitle
                value: page.screen.detectedIP
                code: true
            }
        }
        Label {
            text: page.screen.stepsTitle
            font: Theme.headline
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
            Accessible.role: Accessible.Heading
        }
        ColumnLayout {
            spacing: Theme.between
            Layout.fillWidth: true

            Repeater {
                model: page.screen.steps
                InstructionStep {
                    required property var modelData

                    number: modelData.number
                    title: modelData.text
                    last: true
                    Layout.fillWidth: true
                }
            }
        }
        PrimaryButton {
            id: setUp
            symbol: page.screen.homeIcon
            text: page.screen.setUpTitle
            effect: page.screen.setUp
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
        }
    }

    Stage {
        shown: page.screen.content === "status"
        spacing: Theme.gap

        Card {
            padding: 20
            Layout.fillWidth: true

            RowLayout {
                spacing: Theme.gap
                Layout.fillWidth: true

                SymbolTile {
                    symbol: page.screen.statusIcon
                    tint: Theme.tint(page.screen.statusColor)
                    size: 56
                    radius: 28
                }
                ColumnLayout {
                    spacing: 3
                    Layout.fillWidth: true

                    Label {
                        text: page.screen.networkName
                        font: Theme.title
                        lineHeight: 1.1
                        maximumLineCount: 2
                        elide: Text.ElideRight
                        Layout.fillWidth: true
                        Accessible.role: Accessible.Heading
                    }
                    Label {
                        text: page.screen.statusTitle
                        font: Theme.headline
                        color: Theme.ink(page.screen.statusColor)
                        lineHeight: 1.1
                        Layout.fillWidth: true
                    }
                    Label {
                        text: page.screen.statusText
                        font: Theme.footnote
                        color: Theme.cardSecondaryText
                        Layout.fillWidth: true
                    }
                }
            }
        }
        GroupedSection {
            header: page.screen.addressSection
            footer: page.screen.updateHint

            Repeater {
                model: page.screen.addressRows
                ListRow {
                    required property var modelData
                    required property int index

                    first: index === 0
                    title: modelData.label
                    value: modelData.value
                    valueColor: Theme.ink(modelData.color)
                }
            }
            ActionRow {
                symbol: page.screen.updateIcon
                text: page.screen.updateTitle
                spinning: page.screen.isUpdatingIP
                effect: page.screen.updateIP
            }
        }
        GroupedSection {
            visible: page.screen.showsPolicy
            header: page.screen.policyTitle
            footer: page.screen.policyText

            Repeater {
                model: page.screen.policyRows
                ListRow {
                    required property var modelData
                    required property int index

                    first: index === 0
                    title: modelData.label
                    value: modelData.value
                    valueColor: Theme.ink(modelData.color)
                }
            }
        }
        Card {
            spacing: Theme.between
            Layout.fillWidth: true
            Layout.topMargin: Theme.within

            RowLayout {
                spacing: Theme.between

                SymbolTile {
                    symbol: page.screen.consoleIcon
                    tint: Theme.tint("systemPurple")
                    size: 36
                }
                Label {
                    text: page.screen.consoleTitle
                    font: Theme.headline
                    Layout.fillWidth: true
                    Accessible.role: Accessible.Heading
                }
            }
            Label {
                text: page.screen.consoleText
                font: Theme.callout
                color: Theme.cardSecondaryText
                Layout.fillWidth: true
            }
            SecondaryButton {
                text: page.screen.instructionsTitle
                effect: page.screen.viewInstructions
                Layout.fillWidth: true
            }
        }
    }

    Alert {
        shown: page.screen.showCreateConfirmation
        title: page.screen.createQuestionTitle
        message: page.screen.createQuestion

        AlertButton {
            text: page.screen.cancelCreateTitle
            role: AlertButton.Cancel
            onClicked: page.screen.cancelCreate.trigger()
        }
        AlertButton {
            text: page.screen.confirmCreateTitle
            onClicked: page.screen.confirmCreate.trigger()
        }
    }
    Alert {
        shown: page.screen.showUpdateIPConfirmation
        title: page.screen.updateQuestionTitle
        message: page.screen.updateQuestion

        AlertButton {
            text: page.screen.cancelUpdateTitle
            role: AlertButton.Cancel
            onClicked: page.screen.cancelUpdate.trigger()
        }
        AlertButton {
            text: page.screen.confirmUpdateTitle
            onClicked: page.screen.confirmUpdate.trigger()
        }
    }
    ErrorAlert { screen: page.screen }
}
