import QtQuick
import QtQuick.Layouts
import Quillmar

// Goes back to the previous screen.
Pressable {
    id: control

    leftPadding: Theme.unit
    rightPadding: Theme.within
    corner: Theme.within

    contentItem: RowLayout {
        spacing: 2
        opacity: control.down ? 0.5 : control.hovered ? 0.9 : 1

        Symbol {
            implicitWidth: 24
            implicitHeight: 24
            name: control.mirrored ? "chevron.right" : "chevron.left"
            color: Theme.linkText
        }
        Label {
            text: control.text
            color: Theme.linkText
            lineHeight: 1
            Accessible.ignored: true
        }
    }
}
