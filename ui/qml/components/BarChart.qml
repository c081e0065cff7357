pragma ComponentBehavior: Bound
import QtQuick
import Quillmar

// Stacked bars over time: allowed requests under blocked ones. Each bar is a button. A chart may have more bars than
// fingers can hit: a press anywhere in it points at the nearest bar, and can slide to another before it chooses one.
// The chart is one stop of the Tab key; the arrow keys move between its bars.
FocusScope {
    id: chart

    // Rows with `label`, `name`, `number`, `allowed`, `blocked`, `isSelected` and `choose`.
    property var bars: null
    // The numbers at the top and at the middle.
    property alias topNumber: topText.text
    property alias middleNumber: middleText.text
    property string name
    property real plotHeight: 140
    property bool fadesOthers: false
    // The number of bars for each label.
    property int labelSpacing: 1
    property real widestLabel: 0
    readonly property bool labelsFit: widestLabel + Theme.unit <= step * labelSpacing
    // The index of the bar that the Tab key reaches.
    property int current: 0
    // The index of the bar at which the pointer or the focus is, whichever moved last; or -1.
    readonly property int pointed: activeFocus && (followsFocus || pointer.index < 0) ? current : pointer.index
    property bool followsFocus: false
    // Its name and its number.
    readonly property string readout: buttons.itemAt(pointed)?.readout ?? "" // qmllint disable type
    readonly property bool mirrored: LayoutMirroring.enabled
    readonly property real scaleWidth: Math.ceil(Math.max(topText.advanceWidth, middleText.advanceWidth)) + Theme.within
    readonly property real step: buttons.count > 0 ? (width - scaleWidth) / buttons.count : 0
    signal chosen(bool byKey)

    implicitHeight: plotHeight + 6 + Math.ceil(metrics.height)
    Accessible.role: Accessible.Grouping
    Accessible.name: name

    function indexAt(x) {
        const way = mirrored ? step * buttons.count - x : x
        return step > 0 ? Math.max(0, Math.min(buttons.count - 1, Math.floor(way / step))) : -1
    }
    function focusOn(index) {
        if (index >= 0 && index < buttons.count) {
            current = index
            buttons.itemAt(index).forceActiveFocus(Qt.TabFocusReason)
        }
    }

    FontMetrics {
        id: metrics
        font: Theme.caption
    }
    TextMetrics {
        id: topText
        font: Theme.caption
    }
    TextMetrics {
        id: middleText
        font: Theme.caption
    }

    // The lines of the scale, the base line last.
    Repeater {
        model: [topText.text, middleText.text, ""]

        Item {
            id: line

            required property string modelData
            required property int index

            y: Math.round(index * chart.plotHeight / 2)
            width: chart.width

            Rectangle {
                anchors.left: parent.left
                width: parent.width - chart.scaleWidth
                height: 1
                color: Theme.separator
            }
            Label {
                anchors.right: parent.right
                y: line.index === 0 ? 0 : -height / 2
                text: line.modelData
                font: Theme.caption
                color: Theme.cardSecondaryText
                lineHeight: 1
                Accessible.ignored: true
            }
        }
    }
    Row {
        anchors.left: parent.left
        height: chart.height

        Repeater {
            id: buttons
            model: chart.bars
            onCountChanged: chart.current = Math.max(0, Math.min(chart.current, count - 1))

            Item {
                id: bar

                required property var modelData
                required property int index
                readonly property string name: modelData.name
                readonly property string number: modelData.number
                readonly property string readout: name + ": " + number
                // The item that receives the presses for this bar.
                readonly property Item target: chart
                readonly property bool visualFocus: activeFocus
                readonly property real thickness: Math.min(36, Math.max(3, chart.step * 0.68))
                readonly property real blockedHeight: part(modelData.blocked)
                readonly property real totalHeight: blockedHeight + part(modelData.allowed)
                readonly property real strength: chart.fadesOthers && !modelData.isSelected ? 0.4 : 1

                // A share that is not zero is drawn high enough to be seen.
                function part(share) { return share > 0 ? Math.max(2, Math.round(share * chart.plotHeight)) : 0 }
                function choose(byKey) {
                    modelData.choose.trigger()
                    chart.chosen(byKey)
                }

                width: chart.step
                height: chart.height
                focus: index === chart.current
                activeFocusOnTab: index === chart.current
                onActiveFocusChanged: if (activeFocus) chart.followsFocus = true
                Keys.onRightPressed: chart.focusOn(chart.mirrored ? index - 1 : index + 1)
                Keys.onLeftPressed: chart.focusOn(chart.mirrored ? index + 1 : index - 1)
                Keys.onSpacePressed: choose(true)
                Keys.onReturnPressed: choose(true)
                Keys.onEnterPressed: choose(true)
                Keys.onPressed: event => {
                    const ends = { [Qt.Key_Home]: 0, [Qt.Key_End]: buttons.count - 1 }
                    if (event.key in ends) {
                        chart.focusOn(ends[event.key])
                        event.accepted = true
                    }
                }
                Accessible.role: Accessible.Button
                Accessible.name: name
                Accessible.description: number
                Accessible.focusable: true
                Accessible.checkable: true
                Accessible.checked: modelData.isSelected
                Accessible.onPressAction: choose(true)

                Rectangle {
                    anchors.fill: parent
                    radius: 6
                    color: Theme.alpha(Theme.text, pointer.index !== bar.index ? 0 : pointer.pressed ? 0.12 : 0.07)
                }
                // The parts don't overlap: where one shows through the other it would change its colour.
                BarPart {
                    x: (parent.width - width) / 2
                    y: chart.plotHeight - bar.totalHeight
                    width: bar.thickness
                    height: bar.blockedHeight
                    tint: Theme.red
                    opacity: bar.strength
                }
                BarPart {
                    x: (parent.width - width) / 2
                    y: chart.plotHeight - height
                    width: bar.thickness
                    height: bar.totalHeight - bar.blockedHeight
                    tint: Theme.blue
                    rounded: bar.blockedHeight === 0
                    opacity: bar.strength
                }
                // Centred under its bar, or from there on if the bar is narrower.
                // If there is not enough room, every second label is left out.
                Label {
                    anchors.left: parent.left
                    anchors.leftMargin: Math.max(0, (parent.width - width) / 2)
                    visible: chart.labelsFit || bar.index / chart.labelSpacing % 2 === 0
                    y: chart.plotHeight + 6
                    text: bar.modelData.label
                    font: Theme.caption
                    color: bar.modelData.isSelected || pointer.index === bar.index ? Theme.text : Theme.cardSecondaryText
                    lineHeight: 1
                    wrapMode: Text.NoWrap
                    onImplicitWidthChanged: chart.widestLabel = Math.max(chart.widestLabel, implicitWidth)
                    Accessible.ignored: true
                }
                FocusRing {
                    around: bar
                    corner: 6
                    gap: 0
                }
            }
        }
    }
    MouseArea {
        id: pointer

        readonly property int index: pressed || containsMouse ? chart.indexAt(mouseX) : -1

        anchors.left: parent.left
        width: parent.width - chart.scaleWidth
        height: parent.height
        hoverEnabled: true
        cursorShape: Qt.PointingHandCursor
        onPositionChanged: chart.followsFocus = false
        onClicked: mouse => {
            chart.current = chart.indexAt(mouse.x)
            buttons.itemAt(chart.current).choose(false)
        }
    }
}
