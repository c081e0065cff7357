import QtQuick
import QtQuick.Layouts
import Quillmar

// A number and its label, which is under the number, or beside it if the tiles are stacked.
Rectangle {
    id: tile

    property int count
    property string label
    property string symbol
    property color tint: Theme.blue
    property bool flat: false
    // The width that keeps an upright tile's label on one line.
    readonly property real neededWidth: Math.ceil(labelWidth.advanceWidth) + 2 * Theme.within

    implicitHeight: grid.implicitHeight + 2 * Theme.between
    radius: Theme.corner
    color: Theme.card
    Layout.fillWidth: true
    Layout.preferredWidth: 1
    Accessible.role: Accessible.StaticText
    Accessible.name: count + " " + label

    TextMetrics {
        id: labelWidth
        font: Theme.footnote
        text: tile.label
    }
    GridLayout {
        id: grid
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.leftMargin: tile.flat ? Theme.gap : Theme.within
        anchors.rightMargin: anchors.leftMargin
        columns: tile.flat ? 2 : 1
        columnSpacing: Theme.between
        rowSpacing: 4

        RowLayout {
            spacing: 6
            Layout.alignment: Qt.AlignHCenter

            Symbol {
                name: tile.symbol
                color: tile.tint
                Layout.preferredWidth: 18
                Layout.preferredHeight: 18
            }
            Label {
                text: tile.count
                font: Theme.title
                lineHeight: 1
                Accessible.ignored: true
            }
        }
        Label {
            text: tile.label
            font: Theme.footnote
            color: Theme.cardSecondaryText
            lineHeight: 1
            horizontalAlignment: tile.flat ? Text.AlignLeft : Text.AlignHCenter
            Layout.fillWidth: true
            Accessible.ignored: true
        }
    }
}
