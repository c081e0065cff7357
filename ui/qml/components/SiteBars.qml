pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Quillmar

// A titled list of sites with their bars, or a placeholder.
ColumnLayout {
    id: list

    property alias title: heading.text
    property alias caption: heading.caption
    property alias emptyText: none.text
    property var bars: null
    signal chosen(bool byKey)

    spacing: Theme.between
    Layout.fillWidth: true

    SectionTitle { id: heading }
    RowGround {
        id: rows
        model: list.bars
        placeholder: none

        BarRow {
            required property var modelData
            required property int index

            bar: modelData
            first: index === 0
            onChosen: byKey => list.chosen(byKey)
        }
    }
    QuietNote {
        id: none
        visible: rows.count === 0
    }
}
