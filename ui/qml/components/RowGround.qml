import QtQuick
import QtQuick.Layouts
import Quillmar

// The rounded ground of a list whose rows come and go: those that stay move to their place.
Rectangle {
    id: ground

    default property alias rows: column.data

    implicitHeight: column.implicitHeight
    radius: Theme.corner
    color: Theme.card
    Layout.fillWidth: true
    Accessible.role: Accessible.List

    Item {
        anchors.fill: parent
        anchors.topMargin: 4
        anchors.bottomMargin: 4
        anchors.leftMargin: 1
        anchors.rightMargin: 1

        Column {
            id: column
            width: parent.width
            topPadding: -4
            move: Transition {
                NumberAnimation { property: "y"; duration: Theme.travel; easing.type: Easing.OutQuad }
            }
        }
    }
}
