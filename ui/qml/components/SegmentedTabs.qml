import QtQuick
import Quillmar

// Two to four tabs on one ground, of equal width; the chosen one is raised. The arrow keys go from one to the next.
FocusScope {
    id: tabs

    // Items with a `title` and `isSelected`.
    property var options: []
    property int current: 0
    readonly property int count: buttons.count
    readonly property real share: count > 0 ? (width - 2 * ground.inset) / count : 0
    signal chosen(string option)

    // Two lines have room.
    implicitHeight: Math.max(Theme.target, Math.ceil(2.2 * Theme.faceHeight * Theme.footnoteStrong.pixelSize) + 2 * Theme.unit)
    implicitWidth: 100 * count
    Accessible.role: Accessible.PageTabList

    function go(index) {
        const tab = buttons.itemAt((index + buttons.count) % buttons.count)
        if (tab) {
            tab.forceActiveFocus(Qt.TabFocusReason)
            tabs.chosen(tab.text)
        }
    }

    Rectangle {
        id: ground
        readonly property int inset: 3
        anchors.fill: parent
        radius: Theme.corner
        color: Theme.card

        Rectangle {
            x: (tabs.LayoutMirroring.enabled ? tabs.count - 1 - tabs.current : tabs.current) * tabs.share + ground.inset
            y: ground.inset
            width: tabs.share
            height: parent.height - 2 * ground.inset
            radius: Theme.corner - ground.inset
            color: Theme.dark ? "#636366" : "#FFFFFF"
            border.width: Theme.dark ? 0 : 1
            border.color: Theme.separator
            Behavior on x { NumberAnimation { duration: Theme.travel; easing.type: Easing.OutCubic } }
        }
        Row {
            anchors.fill: parent
            anchors.leftMargin: ground.inset
            anchors.rightMargin: ground.inset

            Repeater {
                id: buttons
                model: tabs.options

                Pressable {
                    id: tab

                    required property var modelData
                    required property int index
                    readonly property bool isCurrent: modelData.isSelected

                    function take() {
                        if (isCurrent) {
                            tabs.current = index
                        }
                    }
                    onIsCurrentChanged: take()
                    Component.onCompleted: take()

                    width: tabs.share
                    height: tabs.height
                    text: modelData.title
                    padding: 4
                    focus: isCurrent
                    onClicked: tabs.chosen(text)
                    Keys.onRightPressed: tabs.go(index + 1)
                    Keys.onLeftPressed: tabs.go(index - 1)
                    Accessible.role: Accessible.PageTab
                    Accessible.selected: isCurrent

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
