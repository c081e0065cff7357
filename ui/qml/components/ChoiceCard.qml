import QtQuick
import QtQuick.Layouts
import Quillmar

// A large choice with a picture: `horizontal` in a column of such cards, upright if they stand side by side.
Pressable {
    id: card

    property string symbol
    property string detail
    property color from: Theme.blue
    property color to: Theme.blueDark
    property bool horizontal: true

    corner: 20
    padding: horizontal ? 20 : 28
    Accessible.description: detail

    background: Rectangle {
        radius: card.corner
        color: Theme.raised
        border.width: 1
        border.color: card.hovered || card.visualFocus ? Theme.alpha(card.from, 0.6) : Theme.separator
        Behavior on border.color { ColorAnimation { duration: Theme.quick } }

        Elevation {
            z: -1
            anchors.fill: parent
            corner: card.corner
            depth: card.down ? 6 : card.hovered ? 20 : 14
        }
        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: Theme.alpha(card.from, card.down ? 0.08 : card.hovered ? 0.03 : 0)
        }
    }
    contentItem: GridLayout {
        columns: card.horizontal ? 3 : 1
        columnSpacing: Theme.gap
        rowSpacing: Theme.gap

        GradientPlate {
            implicitWidth: card.horizontal ? 56 : 76
            implicitHeight: implicitWidth
            radius: implicitWidth * 0.3
            from: card.from
            to: card.to
            Layout.alignment: card.horizontal ? Qt.AlignVCenter : Qt.AlignHCenter

            Symbol {
                anchors.centerIn: parent
                width: Math.round(parent.width * 0.52)
                height: width
                name: card.symbol
                color: Theme.onBrand
            }
        }
        ColumnLayout {
            spacing: 6
            Layout.fillWidth: true
            Layout.fillHeight: !card.horizontal
            Layout.alignment: card.horizontal ? Qt.AlignVCenter : Qt.AlignTop

            Label {
                text: card.text
                font: card.horizontal ? Theme.headline : Theme.title
                lineHeight: 1.2
                horizontalAlignment: card.horizontal ? Text.AlignLeft : Text.AlignHCenter
                Layout.fillWidth: true
                Accessible.ignored: true
            }
            Label {
                text: card.detail
                font: Theme.callout
                color: Theme.cardSecondaryText
                horizontalAlignment: card.horizontal ? Text.AlignLeft : Text.AlignHCenter
                verticalAlignment: Text.AlignTop
                Layout.fillWidth: true
                Layout.fillHeight: !card.horizontal
                Accessible.ignored: true
            }
        }
        Symbol {
            visible: card.horizontal
            implicitWidth: 20
            implicitHeight: 20
            name: card.mirrored ? "chevron.left" : "chevron.right"
            color: Theme.cardSecondaryText
            Layout.alignment: Qt.AlignVCenter
        }
    }
}
