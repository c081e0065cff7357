pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    topSpace: Theme.gap
    spacing: Theme.gap
    bar: NavigationBar {
        title: page.screen.title
        leading: [
            TextLink {
                visible: page.screen.cancel.enabled
                text: page.screen.cancelTitle
                effect: page.screen.cancel
            },
            BackButton {
                visible: page.screen.back.enabled
                text: page.screen.backTitle
                effect: page.screen.back
            }
        ]
        trailing: TextLink {
            visible: page.screen.done.enabled
            text: page.screen.doneTitle
            strong: true
            effect: page.screen.done
        }
    }

    Stage {
        shown: !page.screen.showInstructions
        first: name.box
        spacing: Theme.gap

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
            header: page.screen.typeSection

            Repeater {
                model: page.screen.deviceTypes
                ChoiceRow {
                    required property var modelData
                    required property int index

                    first: index === 0
                    symbol: modelData.icon
                    text: modelData.label
                    chosen: modelData.id === page.screen.selectedDeviceType
                    onClicked: page.screen.selectedDeviceType = modelData.id
                }
            }
        }
        LabelledField {
            id: name
            title: page.screen.nameSection
            placeholder: page.screen.namePlaceholder
            value: page.screen.deviceName
            onEdited: text => page.screen.deviceName = text
        }
        ColumnLayout {
            spacing: 6
            Layout.fillWidth: true

            RowLayout {
                spacing: Theme.within

                Label {
                    text: page.screen.addressSection
                    font: Theme.footnoteStrong
                    color: Theme.secondaryText
                    lineHeight: 1
                    Layout.fillWidth: true
                    Layout.maximumWidth: implicitWidth
                    Accessible.ignored: true
                }
                Badge {
                    text: page.screen.addressBadge
                    tint: Theme.orange
                    ink: Theme.warningText
                }
                Item { Layout.fillWidth: true }
            }
            LabelledField {
                box.name: page.screen.addressSection
                placeholder: page.screen.addressPlaceholder
                hint: page.screen.addressHint
                inputMethodHints: Qt.ImhPreferNumbers | Qt.ImhNoPredictiveText
                value: page.screen.deviceIP
                onEdited: text => page.screen.deviceIP = text
                onAccepted: page.screen.addDevice.trigger()
            }
        }
        PrimaryButton {
            text: page.screen.addTitle
            busy: page.screen.isLoading
            effect: page.screen.addDevice
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
        }
    }

    Stage {
        shown: page.screen.showInstructions
        spacing: Theme.gap

        SuccessHeader {
            heading: page.screen.resultHeading
            text: page.screen.resultText
            Layout.topMargin: Theme.within
        }
        Card {
            spacing: Theme.between
            Layout.fillWidth: true

            Label {
                text: page.screen.serverPanel
                font: Theme.headline
                Layout.fillWidth: true
                Accessible.role: Accessible.Heading
            }
            RowLayout {
                spacing: Theme.within
                Layout.fillWidth: true

                Label {
                    text: page.screen.serverLabel
                    color: Theme.cardSecondaryText
                    lineHeight: 1
                }
                Label {
                    text: page.screen.dnsServerIP
                    font: Theme.code
                    lineHeight: 1
                    wrapMode: Text.WrapAnywhere
                    Layout.fillWidth: true
                }
            }
            SecondaryButton {
                symbol: "doc.on.doc.fill"
                text: page.screen.copyTitle
                effect: page.screen.copyIPAddress
                Layout.fillWidth: true
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
            spacing: 0
            Layout.fillWidth: true

            Repeater {
                model: page.screen.steps
                InstructionStep {
                    required property var modelData

                    number: modelData.number
                    title: modelData.text
                    last: true
                    Layout.fillWidth: true
                    Layout.bottomMargin: Theme.between
                }
            }
        }
        Banner {
            visible: page.screen.note.length > 0
            text: page.screen.note
            symbol: "info.circle.fill"
            tint: Theme.blue
            ink: Theme.linkText
            Layout.fillWidth: true
        }
    }

    ErrorAlert { screen: page.screen }
}
