import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    centered: true
    tinted: true
    maximumWidth: 480
    spacing: 28

    ScreenHeader {
        title: page.screen.title
        text: page.screen.tagline
    }

    Stage {
        shown: page.screen.stage === "loading"

        LargeSpinner {
            heading: page.screen.loadingHeading
            text: page.screen.loadingText
            Layout.fillWidth: true
            Layout.topMargin: 40
            Layout.bottomMargin: 40
        }
    }

    Stage {
        shown: page.screen.stage === "start"
        first: startButton
        spacing: 28

        Card {
            padding: 24
            spacing: Theme.within
            Layout.fillWidth: true

            Label {
                text: page.screen.startHeading
                font: Theme.title
                Layout.fillWidth: true
                Accessible.role: Accessible.Heading
            }
            Label {
                text: page.screen.startText
                font: Theme.callout
                color: Theme.cardSecondaryText
                Layout.fillWidth: true
            }
            ColumnLayout {
                spacing: Theme.gap
                Layout.fillWidth: true
                Layout.topMargin: Theme.gap

                Repeater {
                    model: page.screen.features
                    FeatureRow {
                        required property var modelData
                        required property int index

                        symbol: modelData.icon
                        text: modelData.text
                        tint: [Theme.green, Theme.blue, Theme.orange][index % 3]
                        Layout.fillWidth: true
                    }
                }
            }
        }
        PrimaryButton {
            id: startButton
            text: page.screen.startTitle
            effect: page.screen.startEnrollment
            focus: true
            Layout.fillWidth: true
        }
    }

    Stage {
        shown: page.screen.stage === "code"
        first: cancelButton
        spacing: 0

        Label {
            text: page.screen.codeHeading
            font: Theme.title
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }
        Label {
            text: page.screen.codeText
            font: Theme.callout
            color: Theme.secondaryText
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
            Layout.bottomMargin: Theme.section
        }
        QRPlate {
            text: page.screen.qrCode.data
            size: page.screen.qrCode.size
            name: page.screen.codeHeading
            Layout.alignment: Qt.AlignHCenter
        }
        Label {
            text: page.screen.codeLabel
            font: Theme.footnote
            color: Theme.secondaryText
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Layout.topMargin: Theme.section
        }
        Label {
            text: page.screen.enrollmentCode
            font: Theme.largeCode
            lineHeight: 1.1
            wrapMode: Text.WrapAnywhere
            maximumLineCount: 8
            elide: Text.ElideRight
            Layout.topMargin: 6
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
        }
        ColumnLayout {
            visible: page.screen.isPolling
            spacing: Theme.between
            Layout.fillWidth: true
            Layout.topMargin: 20

            Label {
                text: page.screen.waitingText
                font: Theme.callout
                color: Theme.secondaryText
                horizontalAlignment: Text.AlignHCenter
                Layout.fillWidth: true
            }
            LoadingDots {
                phase: page.screen.loadingDots ? page.screen.loadingDots.animationPhase : 0
                Layout.alignment: Qt.AlignHCenter
            }
        }
        SecondaryButton {
            id: cancelButton
            text: page.screen.cancelTitle
            effect: page.screen.cancelEnrollment
            Layout.fillWidth: true
            Layout.topMargin: 28
            Layout.minimumHeight: Theme.primaryTarget
        }
    }

    Alert {
        shown: page.screen.showError
        title: page.screen.errorTitle
        message: page.screen.errorMessage

        AlertButton {
            text: page.screen.okTitle
            onClicked: page.screen.dismissError.trigger()
        }
    }
}
