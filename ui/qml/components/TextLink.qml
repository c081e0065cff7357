import QtQuick
import Quillmar

// A button that is only text.
Pressable {
    id: control

    property color ink: Theme.linkText
    property bool strong: false

    leftPadding: Theme.within
    rightPadding: Theme.within
    corner: Theme.within

    contentItem: Label {
        text: control.text
        font: control.strong ? Theme.headline : Theme.body
        color: control.inUse ? control.ink : Theme.secondaryText
        opacity: control.down ? 0.5 : control.hovered ? 0.9 : 1
        lineHeight: 1
        wrapMode: Text.NoWrap
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
