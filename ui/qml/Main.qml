import QtQuick
import Quillmar

// The window: the root's screen, and the prompts that belong to no screen.
Window {
    id: window

    required property var content
    required property var closeKeys
    property var permissionPrompt: null
    property var biometricPrompt: null

    title: "Quillmar"
    minimumWidth: 360
    minimumHeight: 480
    color: Theme.page

    // An alert that closes may leave the focus on the window itself; it belongs to the screen.
    onActiveFocusItemChanged: {
        if (activeFocusItem === contentItem) {
            host.forceActiveFocus()
        }
        // The person has turned to something else.
        if (Tips.control !== activeFocusItem) {
            Tips.withdraw(Tips.control)
        }
    }

    Shortcut {
        // An open alert would block a shortcut of the window.
        context: Qt.ApplicationShortcut
        sequences: window.closeKeys
        onActivated: window.close()
    }

    ScreenHost {
        id: host
        anchors.fill: parent
        focus: true
        screen: window.content.screen
        LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
        LayoutMirroring.childrenInherit: true
    }

    // The tooltip of a control on which the pointer or the focus rests. It lies over every popup.
    Loader {
        id: tip
        property bool ripe: false
        z: 2000000
        active: ripe && Tips.control !== null
        source: "Tip.qml"

        Timer {
            id: patience
            interval: 600
            onTriggered: tip.ripe = true
        }
        Connections {
            target: Tips
            function onControlChanged() {
                tip.ripe = false
                patience.restart()
            }
        }
    }
    Loader {
        active: window.permissionPrompt !== null
        Component.onCompleted: if (active) setSource("SimulatedPermissionPrompt.qml", { prompt: window.permissionPrompt })
    }
    Loader {
        readonly property bool needed: window.biometricPrompt !== null && window.biometricPrompt.shown
        onNeededChanged: if (needed && status === Loader.Null) setSource("BiometricPrompt.qml", { prompt: window.biometricPrompt })
    }
}
