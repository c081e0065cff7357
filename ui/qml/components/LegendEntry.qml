import QtQuick
import Quillmar

// What a colour of a chart means.
Row {
    id: entry

    property string text
    property color tint

    spacing: 6

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: 10
        height: 10
        radius: 3
        color: entry.tint
    }
    Label {
        anchors.verticalCenter: parent.verticalCenter
        text: entry.text
        font: Theme.caption
        color: Theme.cardSecondaryText
        lineHeight: 1
    }
}
