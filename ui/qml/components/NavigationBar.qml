import QtQuick
import Quillmar

// The title in the middle, what leads back before it, what may be done after it; as high as its text needs.
Rectangle {
    id: bar

    property string title
    property alias leading: leadingItems.data
    property alias trailing: trailingItems.data
    readonly property Item onLeft: leadingItems.x <= trailingItems.x ? leadingItems : trailingItems
    readonly property Item onRight: onLeft === leadingItems ? trailingItems : leadingItems
    readonly property real titleStart: onLeft.x + onLeft.width + Theme.within
    readonly property real titleEnd: onRight.x - Theme.within

    implicitHeight: Math.max(Theme.barHeight, titleLabel.implicitHeight + Theme.gap)
    color: Theme.page
    Accessible.role: Accessible.ToolBar
    Accessible.name: titleLabel.text

    Row {
        id: leadingItems
        anchors.left: parent.left
        anchors.leftMargin: Theme.within
        anchors.verticalCenter: parent.verticalCenter
    }
    Label {
        id: titleLabel
        // In the middle of the bar, or as near to it as what stands beside it lets.
        x: Math.max(bar.titleStart, Math.min((bar.width - width) / 2, bar.titleEnd - width))
        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(implicitWidth, bar.titleEnd - bar.titleStart)
        text: bar.title
        font: Theme.headline
        lineHeight: 1
        wrapMode: Text.NoWrap
        elide: Text.ElideRight
        maximumLineCount: 1
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
