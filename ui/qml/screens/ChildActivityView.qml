import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    topSpace: Theme.gap
    bar: NavigationBar {
        title: page.screen.title
        trailing: TextLink {
            text: page.screen.doneTitle
            strong: true
            effect: page.screen.done
        }
    }

    ActivityProgress {
        visible: page.screen.content === "charts" || page.screen.content === "waiting"
        screen: page.screen
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
