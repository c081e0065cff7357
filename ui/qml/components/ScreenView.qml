import QtQuick

// Draws a screen by the name of its type, and the sheet that it presents.
FocusScope {
    id: view

    property var screen: null
    // The screen has no close button of its own, so its sheet adds one.
    readonly property bool closable: drawing.item?.closable ?? false
    property var sheetScreen: screen ? screen.sheet : null

    Loader {
        id: drawing
        anchors.fill: parent
        focus: true
        onLoaded: item.focus = true
    }
    Loader {
        id: sheet
        active: false
        source: "Sheet.qml"
        onLoaded: item.screen = Qt.binding(() => view.sheetScreen)
    }
    Connections {
        target: sheet.item
        function onDismissed() { view.screen.dismissSheet() }
    }
    onSheetScreenChanged: if (sheetScreen) sheet.active = true
    Component.onCompleted: if (screen) drawing.setSource(screen.typeName + ".qml", { screen: screen })
}
