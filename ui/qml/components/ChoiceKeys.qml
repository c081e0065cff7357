import QtQuick
import Quillmar

// The arrow keys of one of several choices: they go on to the next of its kind, or back, and choose it.
Item {
    id: keys

    // Stands among the others, each of which says by `isChoice` that it is one.
    required property Pressable choice

    function go(way) {
        const all = Array.from(choice.parent.children).filter(item => item.isChoice === true && item.visible && item.enabled)
        const next = all[(all.indexOf(choice) + way + all.length) % all.length]
        next.forceActiveFocus(Qt.TabFocusReason)
        next.clicked()
    }
    Keys.onDownPressed: go(1)
    Keys.onUpPressed: go(-1)
    Keys.onRightPressed: go(choice.mirrored ? -1 : 1)
    Keys.onLeftPressed: go(choice.mirrored ? 1 : -1)
}
