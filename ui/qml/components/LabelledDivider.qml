import QtQuick
import QtQuick.Layouts
import Quillmar

// A line with a word in its middle.
RowLayout {
    property string text

    spacing: Theme.between

    Rectangle {
        implicitHeight: 1
        color: Theme.separator
        Layout.fillWidth: true
    }
    Label {
        text: parent.text
        font: Theme.footnoteStrong
        color: Theme.secondaryText
    }
    Rectangle {
        implicitHeight: 1
        color: Theme.separator
        Layout.fillWidth: true
    }
}
