import Quillmar

// A button for a destructive action.
SecondaryButton {
    tint: Theme.red
    ink: Theme.dangerText
}
