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
    QuietNote {
        visible: page.screen.content === "noDevices"
        text: page.screen.noDevicesText
    }
    EmptyState {
        visible: page.screen.content === "empty"
        symbol: "chart.bar.fill"
        heading: page.screen.emptyHeading
        text: page.screen.emptyText
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
