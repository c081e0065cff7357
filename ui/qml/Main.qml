import QtQuick
import Quillmar

// The window: the root's screen, and the questions that belong to no screen.
Window {
    id: window

    required property var content
    property var permissionPrompt: null
    property var biometricPrompt: null

    title: "Quillmar"
    minimumWidth: 360
    minimumHeight: 480
    color: Theme.page

    // Where a closing question leaves the keyboard, it is at the window itself; it belongs to the screen.
    onActiveFocusItemChanged: if (activeFocusItem === contentItem) host.forceActiveFocus()

    Shortcut {
        // In a window these keys would wait for an open question.
        context: Qt.ApplicationShortcut
        sequences: [StandardKey.Close, StandardKey.Quit] // qmllint disable unqualified
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

    Loader {
        active: window.permissionPrompt !== null
        Component.onCompleted: if (active) setSource("SimulatedPermissionPrompt.qml", { prompt: window.permissionPrompt })
    }
    Loader {
        readonly property bool needed: window.biometricPrompt !== null && window.biometricPrompt.shown
        onNeededChanged: if (needed && status === Loader.Null) setSource("BiometricPrompt.qml", { prompt: window.biometricPrompt })
    }
}
