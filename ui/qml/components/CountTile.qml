import QtQuick
import QtQuick.Layouts
import Quillmar

// A number and what it counts.
Rectangle {
    id: tile

    property int count
    property string label
    property string symbol
    property color tint: Theme.blue

    implicitHeight: column.implicitHeight + 2 * Theme.between
    radius: Theme.corner
    color: Theme.card
    Layout.fillWidth: true
    Layout.preferredWidth: 1
    Accessible.role: Accessible.StaticText
    Accessible.name: count + " " + label

    ColumnLayout {
        id: column
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.leftMargin: Theme.within
        anchors.rightMargin: Theme.within
        spacing: 4

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
            wrapMode: Text.NoWrap
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignHCenter
            Layout.fillWidth: true
            Accessible.ignored: true
        }
    }
}
