import QtQuick
import Quillmar

// A short question or message over everything. Its buttons are AlertButtons. What it shows is made when it is first
// shown, so that a screen costs nothing for what it rarely says.
Item {
    id: alert

    default property list<AlertButton> buttons
    property bool shown: false
    property string title
    property string message
    // A word that tells what kind of question this is.
    property string label
    property string symbol
    property color tint: Theme.blue

    // Takes no place where it stands; what it shows lies over everything.
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
