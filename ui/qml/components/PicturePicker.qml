import QtQuick

// Lets a person choose a picture; the desktop's own dialog is loaded when it is first wanted.
Item {
    id: picker

    signal picked(string path)

    // qmllint disable type
    function open() {
        if (loader.active) {
            loader.item.open()
        } else {
            loader.active = true
        }
    }

    Loader {
        id: loader
        active: false
        source: "PictureDialog.qml"
        onLoaded: item.open()
    }
    Connections {
        target: loader.item
        function onAccepted() { picker.picked(loader.item.selectedFile.toString()) }
    }
    // qmllint enable type
}
