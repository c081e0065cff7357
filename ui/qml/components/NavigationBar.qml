import QtQuick
import Quillmar

// The title in the middle, what leads back before it, what may be done after it; as high as its text needs.
Rectangle {
    id: bar

    property string title
    property alias leading: leadingItems.data
    property alias trailing: trailingItems.data
    readonly property real sideWidth: Math.max(leadingItems.width, trailingItems.width)

    implicitHeight: Math.max(Theme.barHeight, titleLabel.implicitHeight + Theme.gap)
    color: Theme.page
    Accessible.role: Accessible.ToolBar
    Accessible.name: title

    Row {
        id: leadingItems
        anchors.left: parent.left
        anchors.leftMargin: Theme.within
        anchors.verticalCenter: parent.verticalCenter
    }
    Label {
        id: titleLabel
        anchors.centerIn: parent
        width: Math.min(implicitWidth, bar.width - 2 * (bar.sideWidth + Theme.gap))
        text: bar.title
        font: Theme.headline
        lineHeight: 1
        wrapMode: Text.NoWrap
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignHCenter
        Accessible.role: Accessible.Heading
    }
    Row {
        id: trailingItems
        anchors.right: parent.right
        anchors.rightMargin: Theme.within
        anchors.verticalCenter: parent.verticalCenter
    }
    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: 1
        visible: bar.title.length > 0
        color: Theme.separator
    }
}
