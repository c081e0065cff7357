import QtQuick
import Quillmar

// A centred title between the leading and the trailing controls, as high as its text. A title that does not fit
// between them is drawn under them.
Rectangle {
    id: bar

    property string title
    property alias leading: leadingItems.data
    property alias trailing: trailingItems.data
    readonly property Item onLeft: leadingItems.x <= trailingItems.x ? leadingItems : trailingItems
    readonly property Item onRight: onLeft === leadingItems ? trailingItems : leadingItems
    readonly property real titleStart: onLeft.x + onLeft.width + Theme.within
    readonly property real titleEnd: onRight.x - Theme.within
    readonly property real lineWidth: Math.ceil(titleWidth.advanceWidth) + 1
    readonly property bool below: lineWidth > titleEnd - titleStart
    readonly property real rowHeight: Math.max(Theme.barHeight, leadingItems.height, trailingItems.height,
                                               below ? 0 : titleLabel.height + Theme.gap)

    implicitHeight: rowHeight + (below ? titleLabel.height + Theme.within : 0)
    color: Theme.page
    Accessible.role: Accessible.ToolBar
    Accessible.name: titleLabel.text

    TextMetrics {
        id: titleWidth
        font: titleLabel.font
        text: bar.title
    }
    Row {
        id: leadingItems
        anchors.left: parent.left
        anchors.leftMargin: Theme.within
        y: (bar.rowHeight - height) / 2
    }
    Label {
        id: titleLabel
        // Centred in the bar, or as near to the centre as the controls allow.
        x: bar.below ? Theme.gap : Math.max(bar.titleStart, Math.min((bar.width - width) / 2, bar.titleEnd - width))
        y: bar.below ? bar.rowHeight : (bar.rowHeight - height) / 2
        width: bar.below ? bar.width - 2 * Theme.gap : bar.lineWidth
        text: bar.title
        font: Theme.headline
        lineHeight: 1
        elide: Text.ElideRight
        maximumLineCount: bar.below ? 2 : 1
        horizontalAlignment: Text.AlignHCenter
        Accessible.role: Accessible.Heading
    }
    Row {
        id: trailingItems
        anchors.right: parent.right
        anchors.rightMargin: Theme.within
        y: (bar.rowHeight - height) / 2
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
