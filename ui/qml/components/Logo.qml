import Quillmar

// The application's logo.
Picture {
    property int size: 88

    name: "logo"
    implicitWidth: size
    implicitHeight: size
}
