import QtQuick
import Quillmar

// Stands in for the system's permission prompt, and says that it is a simulation.
Alert {
    id: dialog

    required property var prompt

    shown: prompt.shown
    symbol: "network"
    label: prompt.label
    title: prompt.title
    message: prompt.message

    AlertButton {
        text: dialog.prompt.refuseTitle
        role: AlertButton.Cancel
        onClicked: dialog.prompt.answer(false)
    }
    AlertButton {
        text: dialog.prompt.allowTitle
        role: AlertButton.Default
        onClicked: dialog.prompt.answer(true)
    }
}
