import QtQuick
import QtQuick.Layouts
import Quillmar

// An important line of text with its symbol.
Rectangle {
    id: banner

    property string text
    property string symbol: "exclamationmark.triangle.fill"
    property color tint: Theme.orange
    property color ink: Theme.warningText

    implicitWidth: row.implicitWidth + 2 * Theme.between
    implicitHeight: row.implicitHeight + 2 * Theme.between
    radius: Theme.corner
    color: Theme.alpha(tint, Theme.dark ? 0.2 : 0.12)
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    RowLayout {
        id: row
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: Theme.between
        anchors.verticalCenter: parent.verticalCenter
        spacing: 10

        Symbol {
            name: banner.symbol
            color: banner.ink
            Layout.preferredWidth: 20
            Layout.preferredHeight: 20
            Layout.alignment: Qt.AlignTop
        }
        Label {
            text: banner.text
            font: Theme.callout
            color: banner.ink
            lineHeight: 1.2
            Layout.fillWidth: true
            Accessible.ignored: true
        }
    }
}
