import QtQuick
import Quillmar

// Two to four tabs on one ground, of equal width; the chosen one is raised. The arrow keys go from one to the next.
FocusScope {
    id: tabs

    property var options: []
    property string selected
    readonly property int current: Math.max(0, options.indexOf(selected))
    readonly property real share: options.length > 0 ? (width - 2 * ground.inset) / options.length : 0
    signal chosen(string option)

    implicitHeight: Theme.target
    implicitWidth: 100 * options.length
    Accessible.role: Accessible.PageTabList

    function go(index) {
        const tab = buttons.itemAt((index + buttons.count) % buttons.count)
        if (tab) {
            tab.forceActiveFocus(Qt.TabFocusReason)
            tabs.chosen(tab.modelData)
        }
    }

    Rectangle {
        id: ground
        readonly property int inset: 3
        anchors.fill: parent
        radius: Theme.corner
        color: Theme.card

        Rectangle {
            x: (tabs.LayoutMirroring.enabled ? tabs.options.length - 1 - tabs.current : tabs.current) * tabs.share + ground.inset
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

                    required property string modelData
                    required property int index
                    readonly property bool isCurrent: index === tabs.current

                    width: tabs.share
                    height: tabs.height
                    text: modelData
                    padding: 4
                    focus: isCurrent
                    onClicked: tabs.chosen(modelData)
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
