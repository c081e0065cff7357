import QtQuick
import QtQuick.Layouts
import Quillmar

// A list of rows on a rounded background. Rows come and go, and the others move to their new places; but while the
// pointer or the focus is in the list, no row moves. If the focused row is removed, the row that takes its place gets
// the focus, or the last row. If the list becomes empty, `placeholder` keeps the focus until there is a row again.
FocusScope {
    id: ground

    property var model: null
    property alias count: rows.count
    default property alias delegate: rows.delegate
    // Shown instead of an empty list.
    property Item placeholder: null
    readonly property bool held: activeFocus || pointer.hovered
    property Page page: null
    // The removed row that had the focus: its index, whether the focus was active, and the reason of that focus.
    property int lostAt: -1
    property bool hadFocus: false
    property int focusReason: Qt.OtherFocusReason

    visible: count > 0
    implicitHeight: column.implicitHeight
    Layout.fillWidth: true
    Accessible.role: Accessible.List
    onHeldChanged: if (page) page.hold(ground, held)
    Component.onCompleted: {
        let above = parent
        while (above && !(above instanceof Page)) {
            above = above.parent
        }
        page = above
    }

    function lose(index, item) {
        const control = focusedIn(item)
        if (control) {
            focusReason = control.keyboardFocus ?? control.visualFocus ? Qt.TabFocusReason : Qt.OtherFocusReason
            lostAt = index
            hadFocus = activeFocus
            page.handingOver = true
        } else if (index < lostAt) {
            --lostAt
        }
    }
    // The focused item of this list, even if the list itself lacks the active focus.
    function focusedIn(item) {
        return item.focus ? item : Array.from(item.children).map(focusedIn).find(found => found) ?? null
    }
    function handOver() {
        const heir = lostAt >= 0 ? rows.itemAt(Math.min(lostAt, rows.count - 1)) : null
        if (heir) {
            giveFocus(heir, focusReason)
        } else if (lostAt >= 0 && placeholder && hadFocus) {
            placeholder.forceActiveFocus(focusReason)
        } else if (rows.count > 0 && placeholder && placeholder.activeFocus) {
            page.handingOver = true
            giveFocus(rows.itemAt(0), focusReason)
        }
        lostAt = -1
        page.handingOver = false
    }
    // Focuses the row, or the first control in it.
    function giveFocus(row, reason) {
        const control = row.activeFocusOnTab ? row : row.nextItemInFocusChain(true)
        if (activeFocus || (placeholder && placeholder.activeFocus)) {
            control.forceActiveFocus(reason)
        } else {
            control.focus = true
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: Theme.corner
        color: Theme.card
    }
    Column {
        id: column
        width: parent.width
        move: Transition {
            enabled: !selecting.running
            NumberAnimation { property: "y"; duration: Theme.travel; easing.type: Easing.OutQuad }
        }

        Repeater {
            id: rows
            model: ground.model
            onItemRemoved: (index, item) => ground.lose(index, item)
            onItemAdded: index => {
                if (index < ground.lostAt) {
                    ++ground.lostAt
                }
            }
        }
    }
    // The rows of another selection are in their places at once.
    Timer {
        id: selecting
        interval: 250
    }
    HoverHandler { id: pointer }
    Binding {
        target: ground.model
        property: "held"
        value: ground.held
        when: ground.model !== null
    }
    Connections {
        target: ground.model
        function onAssigned() {
            if (ground.model.isSelecting()) {
                selecting.restart()
            }
            ground.handOver()
        }
    }
}
