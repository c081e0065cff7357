import QtQuick
import QtQuick.Layouts
import Quillmar

// The strength of a password, as bars and as a word.
RowLayout {
    id: meter

    // Each has the name of a `color` and an `opacity`.
    property var bars: []
    property string label
    property string colorName

    spacing: 6
    Accessible.role: Accessible.Indicator
    Accessible.name: label

    Repeater {
        model: meter.bars
        Rectangle {
            required property var modelData

            implicitHeight: 5
            radius: 2.5
            color: Theme.tint(modelData.color)
            opacity: modelData.opacity
            Layout.fillWidth: true
            Layout.maximumWidth: 90
            Behavior on color { ColorAnimation { duration: Theme.moderate } }
        }
    }
    Label {
        text: meter.label
        font: Theme.footnoteStrong
        color: Theme.ink(meter.colorName)
        lineHeight: 1
        Layout.leftMargin: 4
        Accessible.ignored: true
    }
}
