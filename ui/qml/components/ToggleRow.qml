import QtQuick
import Quillmar

// A switch as a row of a GroupedSection. It shows its model's value, even after the person flipped it.
Item {
    id: row

    property string text
    property bool on: false
    property var effect: null
    property bool first: false

    width: parent ? parent.width : 0
    implicitHeight: Math.max(Theme.target + 8, toggle.implicitHeight)

    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: Theme.gap
        height: 1
        visible: !row.first
        color: Theme.separator
    }
    Toggle {
        id: toggle
        anchors.fill: parent
        anchors.leftMargin: Theme.gap
        anchors.rightMargin: Theme.gap
        text: row.text
        enabled: !row.effect || row.effect.enabled
        checked: row.on
        onToggled: {
            row.effect.trigger()
            checked = Qt.binding(() => row.on)
        }
    }
}
