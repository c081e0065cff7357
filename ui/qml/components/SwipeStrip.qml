import QtQuick
import QtQuick.Layouts
import Quillmar

// What a drag would do, drawn behind the dragged row at the edge that it uncovers.
Rectangle {
    id: strip

    property string title
    property string symbol
    property color tint: Theme.green
    property bool atEnd: false

    anchors.fill: parent
    color: tint

    RowLayout {
        anchors.verticalCenter: parent.verticalCenter
        anchors.left: strip.atEnd ? undefined : parent.left
        anchors.right: strip.atEnd ? parent.right : undefined
        anchors.margins: Theme.gap
        spacing: 6

        Symbol {
            name: strip.symbol
            color: Theme.onBrand
            Layout.preferredWidth: 18
            Layout.preferredHeight: 18
        }
        Label {
            text: strip.title
            font: Theme.footnoteStrong
            color: Theme.onBrand
            lineHeight: 1
        }
    }
}
