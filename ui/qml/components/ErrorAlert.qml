import Quillmar

// The alert that nearly every screen has for what went wrong, in the words of its model.
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
