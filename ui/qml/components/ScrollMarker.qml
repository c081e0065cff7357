import QtQuick
import Quillmar

// The scroll bar of a long page, list or menu, in its margin: thin while the page scrolls, wide under the pointer. The mouse
// drags it, and a press beside the thumb scrolls by a page. A finger scrolls the page itself.
Item {
    id: bar

    property Flickable flickable
    readonly property real track: height - 4
    readonly property real thumb: Math.max(32, flickable.visibleArea.heightRatio * track)
    readonly property real length: flickable.contentHeight - flickable.height
    readonly property real place: length > 0 ? flickable.contentY / length : 0
    readonly property bool inHand: pointer.hovered || area.pressed

    y: flickable.y
    width: 14
    height: flickable.height
    visible: flickable.visibleArea.heightRatio < 1

    function scrollTo(y) { flickable.contentY = Math.max(0, Math.min(length, y)) }

    Rectangle {
        anchors.right: parent.right
        anchors.rightMargin: 3
        y: 2 + bar.place * (bar.track - bar.thumb)
        width: bar.inHand ? 8 : 4
        height: bar.thumb
        radius: width / 2
        color: Theme.text
        opacity: area.pressed ? 0.6 : bar.inHand ? 0.45 : bar.flickable.moving || lingering.running ? 0.35 : 0
        Behavior on opacity { NumberAnimation { duration: Theme.moderate } }
        Behavior on width { NumberAnimation { duration: Theme.reducedMotion ? 0 : Theme.quick } }
    }
    Timer {
        id: lingering
        interval: 800
    }
    Connections {
        target: bar.flickable
        function onContentYChanged() { lingering.restart() }
    }
    HoverHandler { id: pointer }
    MouseArea {
        id: area

        // From the top of the thumb to the place where it was taken; not a number if it was not.
        property real hold: NaN

        anchors.fill: parent
        preventStealing: true
        onPressed: mouse => {
            mouse.accepted = mouse.source === Qt.MouseEventNotSynthesized
            const top = 2 + bar.place * (bar.track - bar.thumb)
            const isBeside = mouse.y < top || mouse.y > top + bar.thumb
            hold = isBeside ? NaN : mouse.y - top
            if (isBeside) {
                bar.scrollTo(bar.flickable.contentY + (mouse.y < top ? -0.9 : 0.9) * bar.flickable.height)
            }
        }
        onPositionChanged: mouse => {
            if (pressed && !isNaN(hold)) {
                bar.scrollTo((mouse.y - 2 - hold) / (bar.track - bar.thumb) * bar.length)
            }
        }
    }
}
