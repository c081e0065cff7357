import QtQuick
import QtQuick.Layouts
import Quillmar

// An option of a single choice: an emoji such as a flag, its text, and a mark when chosen.
Pressable {
    id: card

    property string picture
    property bool selected: false
    readonly property bool isChoice: true

    corner: 16
    leftPadding: 20
    rightPadding: 20
    padding: Theme.gap
    Accessible.role: Accessible.RadioButton
    Accessible.checkable: true
    Accessible.checked: selected
    Keys.forwardTo: ChoiceKeys { choice: card }

    background: Rectangle {
        radius: card.corner
        color: card.selected ? Theme.alpha(Theme.blue, Theme.dark ? 0.22 : 0.08)
             : card.down || card.hovered ? Theme.cardPressed : Theme.card
        border.width: card.selected ? 2 : 0
        border.color: Theme.blue
        Behavior on color { ColorAnimation { duration: Theme.quick } }
    }
    contentItem: RowLayout {
        spacing: Theme.gap

        Label {
            text: card.picture
            font: Theme.face(32, Font.Normal)
            lineHeight: 1
            Accessible.ignored: true
        }
        Label {
            text: card.text
            font: Theme.headline
            lineHeight: 1.2
            verticalAlignment: Text.AlignVCenter
            Layout.fillWidth: true
            Accessible.ignored: true
        }
        Item {
            implicitWidth: 26
            implicitHeight: 26

            Rectangle {
                anchors.fill: parent
                anchors.margins: 1
                visible: !card.selected
                radius: width / 2
                color: "transparent"
                border.width: 2
                border.color: Theme.edge
            }
            Symbol {
                anchors.fill: parent
                visible: opacity > 0
                opacity: card.selected ? 1 : 0
                scale: card.selected || Theme.reducedMotion ? 1 : 0.6
                name: "checkmark.circle.fill"
                color: Theme.blue
                Behavior on opacity { NumberAnimation { duration: Theme.quick } }
                Behavior on scale { SpringMotion { response: 0.3; damping: 0.7 } }
            }
        }
    }
}
