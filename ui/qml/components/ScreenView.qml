import QtQuick

// Draws one screen by its type's name, and the sheet that it presents.
FocusScope {
    id: view

    property var screen: null
    // Whether it has no control of its own that takes it away.
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
