import QtQuick
import QtQuick.Layouts
import Quillmar

// A list of rows on a rounded ground. They come and go, and those that stay move to their place; but while the pointer
// or the focus is in the list, no row moves for another. The focus of a row that goes is handed to the one that takes
// its place, or to the last one; where none is left, `placeholder` keeps it until there is one again.
FocusScope {
    id: ground

    property var model: null
    property alias count: rows.count
    default property alias delegate: rows.delegate
    // What stands in the place of an empty list.
    property Item placeholder: null
    readonly property bool held: activeFocus || pointer.hovered
    property Page page: null
    // The row that went with the focus: where it was, whether the keyboard was in it, and how it had come there.
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
            focusReason = control.visualFocus ? Qt.TabFocusReason : Qt.OtherFocusReason
            lostAt = index
            hadFocus = activeFocus
            page.handingOver = true
        } else if (index < lostAt) {
            --lostAt
        }
    }
    // The focus of this list, active or not.
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
    // To the row, or to the first control in it.
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
    HoverHandler { id: pointer }
    Binding {
        target: ground.model
        property: "held"
        value: ground.held
        when: ground.model !== null
    }
    Connections {
        target: ground.model
        function onAssigned() { ground.handOver() }
    }
}
