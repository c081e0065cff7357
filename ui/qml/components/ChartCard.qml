import QtQuick
import QtQuick.Layouts
import Quillmar

// A bar chart with its title, its number and what its colours mean. While the pointer or the focus is on a bar, the
// bar's number replaces that of the chart.
Card {
    id: card

    property alias bars: chart.bars
    property alias topNumber: chart.topNumber
    property alias middleNumber: chart.middleNumber
    property alias plotHeight: chart.plotHeight
    property alias fadesOthers: chart.fadesOthers
    property alias labelSpacing: chart.labelSpacing
    property alias name: chart.name
    property string title
    property string number
    property string allowedLegend
    property string blockedLegend
    signal chosen(bool byKey)

    spacing: Theme.between
    Layout.fillWidth: true

    ColumnLayout {
        spacing: 2
        Layout.fillWidth: true

        Label {
            text: card.title
            font: Theme.headline
            lineHeight: 1.1
            Layout.fillWidth: true
            Accessible.role: Accessible.Heading
        }
        Label {
            text: chart.readout.length > 0 ? chart.readout : card.number
            font: Theme.footnote
            color: Theme.cardSecondaryText
            lineHeight: 1.2
            Layout.fillWidth: true
        }
    }
    BarChart {
        id: chart
        onChosen: byKey => card.chosen(byKey)
        Layout.fillWidth: true
    }
    Row {
        spacing: Theme.gap
        Layout.alignment: Qt.AlignHCenter

        LegendEntry {
            text: card.allowedLegend
            tint: Theme.blue
        }
        LegendEntry {
            text: card.blockedLegend
            tint: Theme.red
        }
    }
}
