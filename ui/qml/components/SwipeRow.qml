import QtQuick
import Quillmar

// A list row that is dragged by mouse, finger or trackpad as far as its model allows, and shows behind it what the
// drag would do. The context menu (right button, menu key or Shift-F10), `key` and a button do the same; the button is
// shown under the pointer and under the keyboard's focus.
Item {
    id: swipe

    // Has `offset`, `minimumDistance`, `dragChanged` and `dragEnded`.
    required property var row
    // The action of a completed drag, for the menu, the key and the button.
    property var effect: null
    property string actionTitle
    property string actionSymbol
    property bool destructive: false
    property int key: Qt.Key_Return
    property string name
    // The filter's text, marked in the name.
    property string part
    property string description
    property bool first: false
    property real inset: Theme.gap
    // Whether a tap has an action of its own; Return and Space then perform it.
    property bool pressable: false
    // Drawn under the face, visible while the face is dragged aside.
    property alias behind: underlay.data
    // Drawn on the face, and pressed independently of it.
    property alias controls: controlPlace.data
    default property alias content: place.data
    readonly property bool mirrored: LayoutMirroring.enabled
    property bool dragging: false
    // The room that the content leaves for the button at its end, shown or not, so that the button moves no text.
    readonly property real buttonSpace: hasButton ? button.width + button.anchors.rightMargin : 0
    // The button is shown. What the content has in that room is hidden meanwhile.
    readonly property alias showsButton: button.visible
    // A row with controls of its own needs no other button.
    readonly property bool hasButton: effect !== null && controlPlace.children.length === 0
    // FocusRing reads it.
    readonly property bool visualFocus: activeFocus
    // Whether the keyboard brought the focus.
    readonly property alias keyboardFocus: keyFocus.active

    width: parent ? parent.width : 0
    implicitHeight: Math.max(Theme.target + 8, place.childrenRect.height)
    activeFocusOnTab: true
    clip: true
    Accessible.role: pressable ? Accessible.Button : Accessible.ListItem
    Accessible.name: name
    Accessible.description: description
    Accessible.focusable: true
    Accessible.onPressAction: pressable ? tapped() : openMenu(inset, height)

    signal tapped

    function act() {
        if (effect && effect.enabled) {
            effect.trigger()
        }
    }
    function openMenu(x, y) {
        if (effect && effect.enabled) {
            menu.active = true
            menu.item.popup(swipe, x, y)
        }
    }
    Keys.onPressed: event => {
        const isMenu = event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && event.modifiers & Qt.ShiftModifier)
        if (isMenu) {
            openMenu(swipe.inset, swipe.height)
        } else if (event.key === swipe.key || (swipe.key === Qt.Key_Return && event.key === Qt.Key_Enter)) {
            swipe.act()
        } else if (swipe.pressable && [Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key)) {
            swipe.tapped()
        } else {
            return
        }
        event.accepted = true
    }

    Item {
        id: underlay
        anchors.fill: parent
        visible: face.x !== 0
    }

    Rectangle {
        id: face
        width: swipe.width
        height: swipe.height
        x: swipe.row.offset
        // At rest the face is transparent, so that the rounded background of the list shows.
        color: x === 0 ? "transparent" : Theme.card
        Behavior on x {
            enabled: !swipe.dragging
            NumberAnimation { duration: Theme.reducedMotion ? 0 : 500; easing.type: Easing.OutExpo }
        }

        Rectangle {
            anchors.fill: parent
            anchors.margins: 3
            radius: Theme.corner - 3
            color: area.containsMouse ? Theme.alpha(Theme.text, 0.05) : Theme.alpha(Theme.page, pointer.hovered ? 0.6 : 0)
            Behavior on color { ColorAnimation { duration: Theme.quick } }
        }
        Item {
            id: place
            anchors.fill: parent
        }
    }
    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: swipe.inset
        height: 1
        visible: !swipe.first
        color: Theme.separator
    }

    MouseArea {
        id: area

        QuickTouches { target: area }

        property point start
        property point last

        x: face.x
        width: face.width
        height: face.height
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        // While the row is dragged, the list does not scroll.
        preventStealing: swipe.dragging && swipe.row.offset !== 0

        function finish() {
            if (swipe.dragging) {
                swipe.dragging = false
                swipe.row.dragEnded.trigger(last.x - start.x, last.y - start.y)
            }
        }
        onPressed: mouse => {
            start = mapToItem(swipe, mouse.x, mouse.y)
            last = start
            swipe.forceActiveFocus(Qt.MouseFocusReason)
            if (mouse.button === Qt.RightButton) {
                swipe.openMenu(start.x, start.y)
            }
        }
        onPositionChanged: mouse => {
            if (!(mouse.buttons & Qt.LeftButton)) {
                return
            }
            last = mapToItem(swipe, mouse.x, mouse.y)
            const dx = last.x - start.x
            const dy = last.y - start.y
            if (!swipe.dragging && Math.hypot(dx, dy) >= swipe.row.minimumDistance) {
                swipe.dragging = true
            }
            if (swipe.dragging) {
                swipe.row.dragChanged.trigger(dx, dy)
            }
        }
        onReleased: mouse => {
            if (!swipe.dragging && mouse.button === Qt.LeftButton) {
                swipe.tapped()
            }
            finish()
        }
        onCanceled: finish()
        onPressAndHold: mouse => {
            if (!swipe.dragging && mouse.source !== Qt.MouseEventNotSynthesized) {
                swipe.openMenu(mouse.x, mouse.y)
            }
        }
    }
    Item {
        id: controlPlace
        x: face.x
        width: face.width
        height: face.height
    }
    WheelHandler {
        acceptedDevices: PointerDevice.TouchPad
        orientation: Qt.Horizontal
        target: null
        property real way: 0
        onWheel: event => {
            way += event.pixelDelta.x
            swipe.dragging = true
            swipe.row.dragChanged.trigger(way, 0)
        }
        onActiveChanged: {
            if (!active && swipe.dragging) {
                swipe.dragging = false
                swipe.row.dragEnded.trigger(way, 0)
                way = 0
            }
        }
    }
    HoverHandler {
        id: pointer
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad | PointerDevice.Stylus
    }
    KeyFocus {
        id: keyFocus
        target: swipe
    }
    RowButton {
        id: button
        anchors.right: parent.right
        anchors.rightMargin: Theme.within
        anchors.verticalCenter: parent.verticalCenter
        // Stays as long as it has the focus, which would be lost otherwise.
        visible: activeFocus || (swipe.hasButton && swipe.effect.enabled && (pointer.hovered || keyFocus.active)
                                 && !swipe.dragging && face.x === 0)
        text: swipe.actionTitle + " " + swipe.name
        label: swipe.actionTitle
        symbol: swipe.actionSymbol
        destructive: swipe.destructive
        room: swipe.width * 0.25
        inUse: swipe.effect !== null && swipe.effect.enabled
        onClicked: {
            if (activeFocus) {
                swipe.forceActiveFocus(Qt.TabFocusReason)
            }
            swipe.act()
        }
    }
    FocusRing {
        around: swipe
        anchors.margins: 2
        corner: Theme.corner - 4
        z: 1
    }

    // Loaded on first use, because most rows never show it.
    Loader {
        id: menu
        active: false
        // qmllint disable unqualified
        sourceComponent: PopupMenu {
            name: swipe.name

            MenuRow {
                symbol: swipe.actionSymbol
                text: swipe.actionTitle
                effect: swipe.effect
                destructive: swipe.destructive
            }
        }
        // qmllint enable unqualified
    }
}
