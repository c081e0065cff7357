import QtQuick
import QtQuick.Layouts
import Quillmar

// Beside the dashboard, while nothing is opened: what the dashboard can open besides its children.
Page {
    id: rest

    required property var screen

    centered: true
    maximumWidth: 400
    topSpace: Theme.section
    bottomSpace: Theme.section
    spacing: Theme.section

    EmptyState {
        visible: rest.screen.content === "list"
        symbol: "person.2.fill"
        heading: qsTr("Choose a child")
        text: qsTr("Devices, controls and activity appear here.")
        Layout.fillWidth: true
    }
    Logo {
        visible: rest.screen.content !== "list"
        Layout.alignment: Qt.AlignHCenter
    }
    GroupedSection {
        visible: rest.screen.content !== "loading"

        ActionRow {
            first: true
            symbol: rest.screen.familyMembersIcon
            text: rest.screen.familyMembersTitle
            ink: Theme.text
            chevron: true
            effect: rest.screen.openFamilyMembers
        }
        ActionRow {
            symbol: rest.screen.homeNetworkIcon
            text: rest.screen.homeNetworkTitle
            ink: Theme.text
            chevron: true
            effect: rest.screen.openHomeNetwork
        }
        ActionRow {
            symbol: rest.screen.settingsIcon
            text: rest.screen.settingsTitle
            ink: Theme.text
            chevron: true
            effect: rest.screen.openSettings
        }
    }
}
