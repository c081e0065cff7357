import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    required property var screen

    centered: true
    tinted: true

    Logo {
        size: 96
        Layout.alignment: Qt.AlignHCenter
    }
}
