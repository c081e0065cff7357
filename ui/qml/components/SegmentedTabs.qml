pragma ComponentBehavior: Bound
import QtQuick
import Quillmar

// Two to four tabs of equal width on one background; the chosen one is raised. If a title does not fit, the tabs are
// stacked. The arrow keys move between them.
FocusScope {
    id: tabs

    // Items with a `title` and `isSelected`.
    property var options: []
    property int current: 0
    readonly property int count: buttons.count
    readonly property int tabPadding: 4
    readonly property real equalShare: count > 0 ? (width - 2 * ground.inset) / count : 0
    readonly property bool stacked: widestWord() + 2 * tabPadding > equalShare
    readonly property real share: stacked ? width - 2 * ground.inset : equalShare
    // High enough for two lines.
    readonly property real tabHeight: Math.max(Theme.target, Math.ceil(2.2 * Theme.faceHeight * Theme.footnoteStrong.pixelSize) + 2 * Theme.unit)
    signal chosen(string option)

    implicitHeight: tabHeight * (stacked ? count : 1)
    implicitWidth: 100 * count
    Accessible.role: Accessible.PageTabList

    function go(index) {
        const tab = buttons.itemAt((index + buttons.count) % buttons.count)
        if (tab) {
            tab.forceActiveFocus(Qt.TabFocusReason)
            tabs.chosen(tab.text)
        }
    }

    // With Alt, the key belongs to the shortcut for the previous screen.
    function goAside(event, index) {
        event.accepted = !(event.modifiers & Qt.AltModifier)
        if (event.accepted) {
            go(index)
        }
    }
    // In side-by-side tabs these keys scroll the page.
    function stack(event, index) {
        event.accepted = stacked
        if (stacked) {
            go(index)
        }
    }
    function widestWord() {
        let widest = 0
        for (let i = 0; i < buttons.count; ++i) {
            widest = Math.max(widest, buttons.itemAt(i)?.widestWord ?? 0)
        }
        return Math.ceil(widest)
    }

    FontMetrics {
        id: metrics
        font: Theme.footnoteStrong
    }
    Rectangle {
        id: ground
        readonly property int inset: 3
        anchors.fill: parent
        radius: Theme.corner
        color: Theme.card

        Rectangle {
            readonly property int column: tabs.stacked ? 0
                                        : tabs.LayoutMirroring.enabled ? tabs.count - 1 - tabs.current : tabs.current
            x: column * tabs.share + ground.inset
            y: (tabs.stacked ? tabs.current * tabs.tabHeight : 0) + ground.inset
            width: tabs.share
            height: tabs.tabHeight - 2 * ground.inset
            radius: Theme.corner - ground.inset
            color: Theme.chosenTab
            border.width: Theme.dark ? 0 : 1
            border.color: Theme.edge
            Behavior on x { NumberAnimation { duration: Theme.travel; easing.type: Easing.OutCubic } }
            Behavior on y { NumberAnimation { duration: Theme.travel; easing.type: Easing.OutCubic } }
        }
        Grid {
            anchors.fill: parent
            anchors.leftMargin: ground.inset
            anchors.rightMargin: ground.inset
            columns: tabs.stacked ? 1 : tabs.count

            Repeater {
                id: buttons
                model: tabs.options

                Pressable {
                    id: tab

                    required property var modelData
                    required property int index
                    readonly property bool isCurrent: modelData.isSelected
                    readonly property real widestWord: Math.max(...text.split(" ").map(word => metrics.advanceWidth(word)))

                    function take() {
                        if (isCurrent) {
                            tabs.current = index
                        }
                    }
                    onIsCurrentChanged: take()
                    Component.onCompleted: take()

                    width: tabs.share
                    height: tabs.tabHeight
                    text: modelData.title
                    padding: tabs.tabPadding
                    focus: isCurrent
                    onClicked: tabs.chosen(text)
                    Keys.onRightPressed: event => tabs.goAside(event, index + 1)
                    Keys.onLeftPressed: event => tabs.goAside(event, index - 1)
                    Keys.onDownPressed: event => tabs.stack(event, index + 1)
                    Keys.onUpPressed: event => tabs.stack(event, index - 1)
                    Accessible.role: Accessible.PageTab
                    Accessible.selected: isCurrent
                    Accessible.onPressAction: accessiblePressAction()

                    contentItem: Label {
                        text: tab.text
                        font: Theme.footnoteStrong
                        color: tab.isCurrent ? Theme.dark ? Theme.onBrand : Theme.text : Theme.cardSecondaryText
                        lineHeight: 1.1
                        maximumLineCount: 2
                        elide: Text.ElideRight
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                        Accessible.ignored: true
                    }
                }
            }
        }
    }
}
