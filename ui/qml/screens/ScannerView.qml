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
        leading: TextLink {
            text: page.screen.cancelTitle
            effect: page.screen.cancel
        }
    }

    Stage {
        shown: page.screen.stage === "scanning"
        spacing: Theme.gap

        Rectangle {
            id: frame

            radius: 20
            color: page.screen.hasCamera ? Theme.cameraGround : Theme.card
            border.width: drop.containsDrag ? 2 : 0
            border.color: Theme.blue
            implicitHeight: page.screen.hasCamera ? Math.min(width * 0.75, 380) : notice.implicitHeight + 2 * Theme.section
            Layout.fillWidth: true

            Loader {
                anchors.fill: parent
                active: page.screen.hasCamera
                source: "CameraPreview.qml"
            }
            ColumnLayout {
                id: notice
                anchors.centerIn: parent
                width: parent.width - 2 * Theme.section
                visible: !page.screen.hasCamera
                spacing: Theme.between

                SymbolTile {
                    symbol: page.screen.isReading ? "magnifyingglass" : "qrcode.viewfinder"
                    size: 72
                    radius: 36
                    Layout.alignment: Qt.AlignHCenter
                }
                Label {
                    text: page.screen.cameraNotice ?? ""
                    font: Theme.callout
                    color: Theme.cardSecondaryText
                    horizontalAlignment: Text.AlignHCenter
                    Layout.fillWidth: true
                }
                Spinner {
                    running: page.screen.isReading
                    Layout.alignment: Qt.AlignHCenter
                }
            }
            Viewfinder {
                anchors.centerIn: parent
                width: Math.min(parent.width, parent.height) * 0.66
                height: width
                visible: page.screen.hasCamera
            }
            DropArea {
                id: drop
                anchors.fill: parent
                keys: ["text/uri-list"]
                onDropped: event => page.screen.choosePicture.trigger(event.urls[0].toString())
            }
        }
        Label {
            text: page.screen.scanLine
            font: Theme.callout
            color: Theme.secondaryText
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
        }
        GroupedSection {
            ActionRow {
                first: true
                symbol: page.screen.choosePictureIcon
                text: page.screen.choosePictureTitle
                inUse: page.screen.choosePicture.enabled
                onClicked: picker.open()
            }
            ActionRow {
                symbol: page.screen.pasteCodeIcon
                text: page.screen.pasteCodeTitle
                effect: page.screen.pasteCode
            }
            ActionRow {
                symbol: page.screen.readScreenIcon
                text: page.screen.readScreenTitle
                effect: page.screen.readScreen
            }
            ActionRow {
                symbol: page.screen.enterCodeIcon
                text: page.screen.enterCodeTitle
                effect: page.screen.enterCode
            }
        }
        PicturePicker {
            id: picker
            onPicked: path => page.screen.choosePicture.trigger(path)
        }
    }

    Stage {
        shown: page.screen.stage === "typing"
        first: code.box
        spacing: Theme.gap

        SymbolTile {
            symbol: page.screen.enterCodeIcon
            size: 72
            radius: 36
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: Theme.gap
        }
        Label {
            text: page.screen.enterCodeTitle
            font: Theme.title
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }
        LabelledField {
            id: code
            title: page.screen.codeLabel
            hint: page.screen.typingText
            code: true
            inputMethodHints: Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
            value: page.screen.typedCode
            onEdited: text => page.screen.typedCode = text
            onAccepted: page.screen.useTypedCode.trigger()
            Layout.topMargin: Theme.within
        }
        LabelledField {
            title: page.screen.nameLabel
            placeholder: page.screen.namePlaceholder
            value: page.screen.deviceName
            onEdited: text => page.screen.deviceName = text
            onAccepted: page.screen.useTypedCode.trigger()
        }
        PrimaryButton {
            text: page.screen.continueTitle
            effect: page.screen.useTypedCode
            Layout.fillWidth: true
        }
        SecondaryButton {
            text: page.screen.scanAgainTitle
            symbol: "qrcode.viewfinder"
            effect: page.screen.scanAgain
            Layout.minimumHeight: Theme.primaryTarget
            Layout.fillWidth: true
        }
    }

    Stage {
        shown: page.screen.stage === "review"
        first: name.box
        spacing: Theme.gap

        SymbolTile {
            symbol: "qrcode"
            size: 72
            radius: 36
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: Theme.gap
        }
        Label {
            text: page.screen.reviewHeading
            font: Theme.title
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }
        LabelledField {
            id: name
            title: page.screen.nameLabel
            placeholder: page.screen.namePlaceholder
            value: page.screen.deviceName
            onEdited: text => page.screen.deviceName = text
            onAccepted: page.screen.completeEnrollment.trigger()
            Layout.topMargin: Theme.within
        }
        PrimaryButton {
            text: page.screen.completeTitle
            busy: page.screen.isProcessing
            effect: page.screen.completeEnrollment
            Layout.fillWidth: true
        }
        SecondaryButton {
            text: page.screen.scanAgainTitle
            symbol: "qrcode.viewfinder"
            effect: page.screen.scanAgain
            Layout.minimumHeight: Theme.primaryTarget
            Layout.fillWidth: true
        }
    }

    Stage {
        shown: page.screen.stage === "success"
        first: doneButton
        spacing: Theme.gap

        SuccessHeader {
            heading: page.screen.successHeading
            text: page.screen.successText
        }
        PrimaryButton {
            id: doneButton
            text: page.screen.doneTitle
            effect: page.screen.done
            Layout.fillWidth: true
            Layout.topMargin: Theme.within
        }
    }

    ErrorAlert { screen: page.screen }
}
