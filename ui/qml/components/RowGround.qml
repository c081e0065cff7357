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

    Column {
        id: column
        width: parent.width
        move: Transition {
            NumberAnimation { property: "y"; duration: Theme.travel; easing.type: Easing.OutQuad }
        }
    }
}
