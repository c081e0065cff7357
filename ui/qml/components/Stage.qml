import QtQuick
import QtQuick.Layouts
import Quillmar

// One of several alternating contents of a screen; it fades in when it is shown.
ColumnLayout {
    property bool shown: false
    // The item that gets the focus when this content is shown.
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
