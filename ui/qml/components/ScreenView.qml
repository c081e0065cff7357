import QtQuick
import Quillmar

// Draws a screen by the name of its type, and the screens that it presents: a sheet over it, and a page over it or, in
// a wide window, beside it.
FocusScope {
    id: view

    property var screen: null
    // Sheets lie over this part of the window; null: over all of it.
    property Item ground: null
    // The screen has no close button of its own, so its sheet adds one.
    readonly property bool closable: drawing.item?.closable ?? false
    // Of the sheet in which the screen stands.
    readonly property real sheetWidth: drawing.item?.sheetWidth ?? Theme.sheetWidth
    readonly property var sheetScreen: screen?.sheet ?? null
    readonly property var pageScreen: screen?.page
    property bool complete: false
    readonly property bool beside: complete && pageScreen !== undefined && width >= Theme.deskWidth
    property Item usedPane: null

    implicitHeight: drawing.implicitHeight

    // The keys that no control has used. A key that is held down acts once.
    Keys.onPressed: event => {
        if (event.key === Qt.Key_F1) {
            keyList.open()
            event.accepted = true
        } else if (screen) {
            event.accepted = event.isAutoRepeat ? event.key === Qt.Key_Escape : screen.pressKey(event.key, event.modifiers)
        }
    }

    Loader {
        id: drawing
        anchors.left: parent.left
        width: view.beside ? Theme.dashboardWidth(view.width) : view.width
        height: view.height
        focus: true
        onLoaded: item.focus = true
    }
    // Where the page stands in a wide window. Loaded on first use.
    Loader {
        id: pane
        anchors.left: drawing.right
        anchors.right: view.right
        height: view.height
        visible: false
        onLoaded: item.resting = Qt.binding(() => view.pageScreen === null)
    }
    Binding {
        target: drawing.item
        property: "beside"
        value: view.beside
        when: view.pageScreen !== undefined && drawing.status === Loader.Ready
    }

    Loader {
        id: page
        active: false
        source: "Sheet.qml"
        onLoaded: {
            item.pane = Qt.binding(() => view.usedPane)
            item.screen = Qt.binding(() => view.pageScreen ?? null)
        }
    }
    Connections {
        target: page.item
        function onDismissed() { view.screen.dismissPage() }
        function onLeft() { drawing.forceActiveFocus() }
    }
    Loader {
        id: sheet
        active: false
        source: "Sheet.qml"
        onLoaded: {
            item.ground = Qt.binding(() => view.ground)
            item.screen = Qt.binding(() => view.sheetScreen)
        }
    }
    Loader {
        id: keyList
        function open() {
            if (!item) {
                setSource("KeyList.qml", { keys: view.screen.keyCommands })
            }
            item.open() // qmllint disable type
        }
    }
    Connections {
        target: sheet.item
        function onDismissed() { view.screen.dismissSheet() }
    }

    // The page moves while both of its places are visible, so that it keeps its focus.
    onBesideChanged: {
        screen.setPagesBeside(beside)
        if (beside && pane.status === Loader.Null) {
            pane.setSource("SidePane.qml", { screen: screen, source: drawing.item.rest }) // qmllint disable type
        }
        pane.visible = pane.visible || beside
        usedPane = beside ? pane : null
        pane.visible = beside
    }
    // While it is held, the screen does not scroll to what gets the focus.
    function holdStill(held) {
        if (drawing.item?.handingOver !== undefined) {
            drawing.item.handingOver = held
        }
    }
    onPageScreenChanged: if (pageScreen) page.active = true
    onSheetScreenChanged: if (sheetScreen) sheet.active = true
    Component.onCompleted: {
        if (screen) {
            drawing.setSource(screen.typeName + ".qml", { screen: screen })
        }
        complete = true
    }
}
