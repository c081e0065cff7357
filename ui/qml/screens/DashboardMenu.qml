import QtQuick
import Quillmar

// The other actions of a signed-in parent.
PopupMenu {
    id: menu

    required property var screen

    MenuRow {
        symbol: menu.screen.settingsIcon
        text: menu.screen.settingsTitle
        effect: menu.screen.openSettings
    }
    MenuRow {
        symbol: menu.screen.familyMembersIcon
        text: menu.screen.familyMembersTitle
        effect: menu.screen.openFamilyMembers
    }
    MenuRow {
        symbol: menu.screen.homeNetworkIcon
        text: menu.screen.homeNetworkTitle
        effect: menu.screen.openHomeNetwork
    }
    MenuRow {
        symbol: menu.screen.themeIcon
        text: menu.screen.themeTitle
        effect: menu.screen.cycleTheme
    }
    MenuRow {
        symbol: menu.screen.logoutIcon
        text: menu.screen.logoutTitle
        effect: menu.screen.logout
        destructive: true
    }
}
