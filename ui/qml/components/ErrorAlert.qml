import Quillmar

// The error alert of nearly every screen; its text comes from the model.
Alert {
    id: alert

    required property var screen

    shown: screen.showError
    title: screen.errorTitle
    message: screen.errorMessage

    AlertButton {
        text: alert.screen.okTitle
        onClicked: alert.screen.dismissError.trigger()
    }
}
