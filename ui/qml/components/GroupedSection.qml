import QtQuick
import QtQuick.Layouts
import Quillmar

// A titled group of rows on a rounded background, with an optional caption under it. Each row draws its own
// separator, except the first visible one.
ColumnLayout {
    id: section

    default property alias rows: column.data
    property string header
    property string footer
    property color ground: Theme.card

    spacing: Theme.within
    Layout.fillWidth: true
    Layout.topMargin: Theme.within
    Accessible.role: Accessible.Grouping
    Accessible.name: header

    Label {
        visible: section.header.length > 0
        text: section.header
        font: Theme.footnoteStrong
        color: Theme.secondaryText
        leftPadding: Theme.gap
        rightPadding: Theme.gap
        Layout.fillWidth: true
        Accessible.role: Accessible.Heading
    }
    Rectangle {
        // A layout may forget an item that once had no height.
        implicitHeight: Math.max(1, column.implicitHeight)
        radius: Theme.corner
        color: section.ground
        Layout.fillWidth: true

        Column {
            id: column
            width: parent.width
        }
    }
    Label {
        visible: section.footer.length > 0
        text: section.footer
        font: Theme.footnote
        color: Theme.secondaryText
        leftPadding: Theme.gap
        rightPadding: Theme.gap
        Layout.fillWidth: true
    }
}
