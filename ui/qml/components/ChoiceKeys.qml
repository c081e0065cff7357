import QtQuick
import Quillmar

// The arrow keys of a single choice: they move to the next or previous option and choose it.
Item {
    id: keys

    // One of the options, which are the siblings with `isChoice`.
    required property Pressable choice

    function go(way) {
        const all = Array.from(choice.parent.children).filter(item => item.isChoice === true && item.visible && item.enabled)
        const next = all[(all.indexOf(choice) + way + all.length) % all.length]
        next.forceActiveFocus(Qt.TabFocusReason)
        next.clicked()
    }
    Keys.onDownPressed: go(1)
    Keys.onUpPressed: go(-1)
    // With Alt, the key belongs to the shortcut for the previous screen.
    function goAside(event, way) {
        event.accepted = !(event.modifiers & Qt.AltModifier)
        if (event.accepted) {
            go(choice.mirrored ? -way : way)
        }
    }
    Keys.onRightPressed: event => goAside(event, 1)
    Keys.onLeftPressed: event => goAside(event, -1)
}
