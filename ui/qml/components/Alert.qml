import QtQuick
import Quillmar

// A modal question or message. Its buttons are AlertButtons. Its popup is created when it is first shown, so that a
// screen does not pay for alerts that it rarely needs.
Item {
    id: alert

    default property list<AlertButton> buttons
    property bool shown: false
    property string title
    property string message
    // The kind of question, in one word.
    property string label
    property string symbol
    property color tint: Theme.blue

    // The alert takes no room in its layout; its popup covers the window.
    visible: false

    Loader {
        id: loader
        active: false
    }
    onShownChanged: load()
    Component.onCompleted: load()

    function load() {
        if (shown && !loader.item) {
            loader.setSource("AlertPopup.qml", { alert: alert })
            loader.active = true
        }
    }
}
