import QtQuick
import QtQuick.Layouts
import Quillmar

// A column of related content on a rounded background.
Rectangle {
    id: card

    default property alias content: column.data
    property int padding: Theme.gap
    property alias spacing: column.spacing

    implicitWidth: column.implicitWidth + 2 * padding
    implicitHeight: column.implicitHeight + 2 * padding
    radius: Theme.corner
    color: Theme.card

    ColumnLayout {
        id: column
        x: card.padding
        y: card.padding
        width: card.width - 2 * card.padding
        height: card.height - 2 * card.padding
        spacing: Theme.gap
    }
}
