import Quillmar

// The mark of the application.
Picture {
    property int size: 88

    name: "logo"
    implicitWidth: size
    implicitHeight: size
}
