import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    topSpace: 20
    spacing: 20
    bar: NavigationBar {
        title: page.screen.title
        trailing: TextLink {
            text: page.screen.doneTitle
            strong: true
            effect: page.screen.done
        }
    }

    Label {
        text: page.screen.introduction
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }

    Card {
        padding: 20
        spacing: Theme.gap
        Layout.fillWidth: true

        RowLayout {
            spacing: Theme.gap
            Layout.fillWidth: true

            SymbolTile {
                symbol: "checkmark.shield.fill"
                tint: Theme.green
                size: 52
            }
            ColumnLayout {
                spacing: 2
                Layout.fillWidth: true

                Label {
                    text: page.screen.automaticLabel
                    font: Theme.footnoteStrong
                    color: Theme.positiveText
                    Layout.fillWidth: true
                }
                Label {
                    text: page.screen.automaticHeading
                    font: Theme.headline
                    Layout.fillWidth: true
                    Accessible.role: Accessible.Heading
                }
            }
        }
        Label {
            text: page.screen.automaticText
            font: Theme.callout
            color: Theme.cardSecondaryText
            Layout.fillWidth: true
        }
        PrimaryButton {
            text: page.screen.enableTitle
            effect: page.screen.enableProtection
            focus: true
            Layout.fillWidth: true
        }
        Label {
            text: page.screen.automaticFootnote
            font: Theme.footnote
            color: Theme.cardSecondaryText
            Layout.fillWidth: true
        }
    }

    LabelledDivider {
        text: page.screen.orTitle
        Layout.fillWidth: true
    }

    Card {
        padding: 20
        spacing: 0
        Layout.fillWidth: true

        Label {
            text: page.screen.manualHeading
            font: Theme.headline
            Layout.fillWidth: true
            Layout.bottomMargin: Theme.gap
            Accessible.role: Accessible.Heading
        }
        Repeater {
            model: page.screen.steps
            InstructionStep {
                required property var modelData

                number: modelData.number
                title: modelData.title
                description: modelData.description
                last: modelData.isLast
                Layout.fillWidth: true
            }
        }
    }

    Card {
        padding: 20
        spacing: Theme.within
        Layout.fillWidth: true

        Label {
            text: page.screen.endpointTitle
            font: Theme.headline
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }
        Label {
            text: page.screen.dohEndpoint
            font: Theme.code
            color: Theme.cardSecondaryText
            wrapMode: Text.WrapAnywhere
            Layout.fillWidth: true
        }
        SecondaryButton {
            text: page.screen.copyTitle
            symbol: "doc.on.doc.fill"
            effect: page.screen.copyDoHEndpoint
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
        }
    }

    Label {
        text: page.screen.profileNote
        font: Theme.footnote
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }
}
