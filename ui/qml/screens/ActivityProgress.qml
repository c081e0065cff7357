import QtQuick
import QtQuick.Layouts
import Quillmar

// How far the activity is loaded, with the button that stops it or goes on.
ColumnLayout {
    id: progress

    required property var screen
    readonly property bool loading: screen.filling === "loading"

    spacing: Theme.within
    Layout.fillWidth: true

    RowLayout {
        spacing: Theme.within
        Layout.fillWidth: true
        // What is below stays in its place when there is nothing more to stop.
        Layout.minimumHeight: Theme.target

        Spinner {
            running: progress.loading && progress.screen.content === "charts"
            size: 16
        }
        Label {
            text: progress.screen.progressText
            font: Theme.footnote
            color: Theme.secondaryText
            lineHeight: 1.2
            Layout.fillWidth: true
        }
        // One button for both, which keeps the focus.
        TextLink {
            visible: progress.loading || progress.screen.filling === "stopped"
            text: progress.loading ? progress.screen.stopTitle : progress.screen.goOnTitle
            effect: progress.loading ? progress.screen.stop : progress.screen.goOn
        }
    }
    Banner {
        visible: progress.screen.failureText !== null
        text: progress.screen.failureText ?? ""
        Layout.fillWidth: true
    }
    SecondaryButton {
        visible: progress.screen.failureText !== null
        symbol: "arrow.clockwise"
        text: progress.screen.tryAgainTitle
        effect: progress.screen.tryAgain
        Layout.fillWidth: true
    }
    Label {
        visible: text.length > 0
        text: progress.screen.limitText ?? ""
        font: Theme.footnote
        color: Theme.secondaryText
        Layout.fillWidth: true
    }
    Label {
        visible: text.length > 0
        text: progress.screen.unreadableText ?? ""
        font: Theme.footnote
        color: Theme.secondaryText
        Layout.fillWidth: true
    }
}
