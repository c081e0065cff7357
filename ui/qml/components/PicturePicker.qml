import QtQuick

// Lets a person choose a picture. The desktop's file dialog is loaded on first use.
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
