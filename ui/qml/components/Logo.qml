import QtQuick
import Quillmar

// The mark of the application.
Image {
    property int size: 88

    source: "qrc:/quillmar/images/logo.svg"
    sourceSize: Qt.size(size * Screen.devicePixelRatio, size * Screen.devicePixelRatio)
    width: size
    height: size
    Accessible.ignored: true
}
