import QtQuick
import QtQuick.Layouts
import Quillmar

// The dashboard of a family without children.
ColumnLayout {
    id: welcome

    required property var screen

    spacing: Theme.between

    EmptyState {
        symbol: "person.2.fill"
        heading: welcome.screen.welcomeHeading
        text: welcome.screen.welcomeText
        Layout.fillWidth: true
    }
    PrimaryButton {
        focus: true
        symbol: welcome.screen.addChildIcon
        text: welcome.screen.addFirstTitle
        effect: welcome.screen.addChild
        Layout.fillWidth: true
        Layout.maximumWidth: 420
        Layout.alignment: Qt.AlignHCenter
    }
    SecondaryButton {
        symbol: welcome.screen.homeNetworkIcon
        text: welcome.screen.setUpHomeNetworkTitle
        effect: welcome.screen.openHomeNetwork
        Layout.minimumHeight: Theme.primaryTarget
        Layout.fillWidth: true
        Layout.maximumWidth: 420
        Layout.alignment: Qt.AlignHCenter
    }
    Label {
        text: welcome.screen.setUpHomeNetworkCaption
        font: Theme.footnote
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
        Layout.topMargin: -4
    }
}
