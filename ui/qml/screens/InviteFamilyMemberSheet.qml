import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    maximumWidth: 440
    spacing: Theme.within
    bar: NavigationBar {
        title: page.screen.title
        trailing: TextLink {
            text: page.screen.doneTitle
            strong: true
            effect: page.screen.done
        }
    }

    QRPlate {
        visible: page.screen.qrCode !== null
        text: page.screen.qrCode?.data ?? ""
        size: page.screen.qrCode?.size ?? 200
        name: page.screen.inviteCodeTitle
        Layout.alignment: Qt.AlignHCenter
        Layout.bottomMargin: Theme.within
    }
    Label {
        text: page.screen.expiryText
        font: Theme.footnote
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }
    Label {
        text: page.screen.inviteCodeTitle
        font: Theme.footnoteStrong
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
        Layout.topMargin: Theme.gap
    }
    Label {
        text: page.screen.inviteCode
        font: Theme.largeCode
        lineHeight: 1.1
        wrapMode: Text.WrapAnywhere
        maximumLineCount: 8
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }
    SecondaryButton {
        focus: true
        symbol: page.screen.copyIcon
        text: page.screen.copyTitle
        effect: page.screen.copyCode
        Layout.minimumHeight: Theme.primaryTarget
        Layout.fillWidth: true
        Layout.topMargin: Theme.between
    }
    Label {
        text: page.screen.shareHeading
        font: Theme.headline
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
        Layout.topMargin: Theme.section
    }
    Label {
        text: page.screen.shareText
        font: Theme.callout
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }
}
