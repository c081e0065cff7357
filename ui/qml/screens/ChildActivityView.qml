import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    readonly property bool wide: Window.width >= Theme.twoColumnWidth * Math.max(1, Theme.textScale)
    readonly property real sheetWidth: wide ? Theme.wideSheetWidth : Theme.sheetWidth
    readonly property bool waiting: screen.content === "waiting"

    topSpace: 4
    maximumWidth: Theme.wideSheetWidth
    // The sheet does not grow when the first entries come.
    leastHeight: waiting || screen.content === "charts" ? 720 : 0
    bar: NavigationBar {
        title: page.screen.title
        trailing: [
            IconButton {
                visible: page.screen.openFilter.enabled
                text: page.screen.openFilterTitle
                symbol: "magnifyingglass"
                symbolSize: 22
                effect: page.screen.openFilter
            },
            TextLink {
                text: page.screen.doneTitle
                strong: true
                effect: page.screen.done
            }
        ]
    }

    ActivityProgress {
        visible: page.waiting || page.screen.content === "charts"
        screen: page.screen
    }
    LargeSpinner {
        visible: page.waiting && page.screen.filling === "loading"
        Layout.alignment: Qt.AlignHCenter
        Layout.topMargin: 2 * Theme.section
    }
    EmptyState {
        readonly property bool noDevices: page.screen.content === "noDevices"

        visible: noDevices || page.screen.content === "empty"
        symbol: "chart.bar.fill"
        heading: noDevices ? page.screen.noDevicesText : page.screen.emptyHeading
        text: noDevices ? "" : page.screen.emptyText
        Layout.fillWidth: true
        Layout.topMargin: Theme.section
    }
    Loader {
        active: page.screen.content === "charts"
        visible: active
        sourceComponent: charts
        Layout.fillWidth: true
    }
    Component {
        id: charts
        ActivityCharts {
            screen: page.screen // qmllint disable unqualified
            container: page // qmllint disable unqualified
        }
    }
}
