import Quillmar

// A thing that takes something away.
SecondaryButton {
    tint: Theme.red
    ink: Theme.dangerText
}
