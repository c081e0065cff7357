import QtQuick
import QtQuick.Layouts
import Quillmar

// One of several contents of a screen that take turns; it fades in when its turn comes.
ColumnLayout {
    property bool shown: false
    // Where the keyboard goes when the turn comes.
    property Item first: null

    visible: shown
    spacing: Theme.between
    Layout.fillWidth: true
    onShownChanged: {
        if (shown) {
            entering.restart()
            if (first) {
                first.focus = true
            }
        }
    }

    NumberAnimation on opacity {
        id: entering
        running: false
        from: 0
        to: 1
        duration: Theme.moderate
        easing.type: Easing.OutQuad
    }
}
