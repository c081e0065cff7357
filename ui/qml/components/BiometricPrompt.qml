import QtQuick
import Quillmar

// Covers the window while the fingerprint reader waits for a finger.
Alert {
    id: dialog

    required property var prompt

    shown: prompt.shown
    symbol: "touchid"
    title: prompt.reason

    AlertButton {
        text: dialog.prompt.cancelTitle
        role: AlertButton.Cancel
        onClicked: dialog.prompt.cancel()
    }
    AlertButton {
        text: dialog.prompt.passwordTitle
        role: AlertButton.Default
        onClicked: dialog.prompt.enterPassword()
    }
}
