pragma ComponentBehavior: Bound
import QtQuick
import Quillmar

// A single choice among a few options, as chips that wrap. The arrow keys move between them.
Flow {
    id: row

    // Items with a `title` and `isSelected`.
    property var options: []
    signal chosen(string option)
    signal chosenAt(int index)

    spacing: Theme.within
    Accessible.role: Accessible.Grouping

    function focusOn(index) {
        const chip = chips.itemAt((index + chips.count) % chips.count)
        if (chip) {
            chip.forceActiveFocus(Qt.TabFocusReason)
        }
    }

    // With Alt, the key belongs to the shortcut for the previous screen.
    function goAside(event, index) {
        event.accepted = !(event.modifiers & Qt.AltModifier)
        if (event.accepted) {
            focusOn(index)
        }
    }

    Repeater {
        id: chips
        model: row.options

        Pressable {
            id: chip

            required property var modelData
            required property int index
            readonly property bool current: modelData.isSelected

            width: Math.min(implicitWidth, row.width)
            text: modelData.title
            leftPadding: Theme.between
            rightPadding: Theme.between
            corner: height / 2
            onClicked: {
                row.chosen(modelData.title)
                row.chosenAt(index)
            }
            Keys.onRightPressed: event => row.goAside(event, index + 1)
            Keys.onLeftPressed: event => row.goAside(event, index - 1)
            Accessible.role: Accessible.RadioButton
            Accessible.checkable: true
            Accessible.checked: current

            background: Item {
                Rectangle {
                    anchors.fill: parent
                    anchors.topMargin: 4
                    anchors.bottomMargin: 4
                    radius: height / 2
                    color: chip.current ? Theme.blueDark : chip.down || chip.hovered ? Theme.cardPressed : Theme.card
                    Behavior on color { ColorAnimation { duration: Theme.quick } }
                }
            }
            contentItem: Label {
                text: chip.text
                font: Theme.footnoteStrong
                color: chip.current ? Theme.onBrand : Theme.text
                lineHeight: 1
                wrapMode: Text.NoWrap
                elide: Text.ElideRight
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                Accessible.ignored: true
            }
        }
    }
}
