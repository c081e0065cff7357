import QtQuick
import QtQuick.Layouts
import Quillmar

// A secondary action: the brand's colour on a faint tint of it.
Pressable {
    id: control

    property string symbol
    property color tint: Theme.blue
    property color ink: Theme.linkText
    readonly property color shownInk: inUse ? ink : Theme.outOfUseText

    padding: Theme.within
    leftPadding: 20
    rightPadding: 20

    background: Rectangle {
        radius: control.corner
        color: control.inUse ? Theme.alpha(control.tint, control.down ? 0.26 : control.hovered ? 0.18 : 0.12)
                             : Theme.outOfUse
        Behavior on color { ColorAnimation { duration: Theme.quick } }
    }

    contentItem: Item {
        implicitWidth: row.implicitWidth
        implicitHeight: row.implicitHeight

        RowLayout {
            id: row
            anchors.centerIn: parent
            width: Math.min(implicitWidth, parent.width)
            spacing: Theme.within

            Symbol {
                visible: control.symbol.length > 0
                name: control.symbol
                color: control.shownInk
                Layout.preferredWidth: 18
                Layout.preferredHeight: 18
            }
            Label {
                text: control.text
                font: Theme.headline
                color: control.shownInk
                lineHeight: 1
                horizontalAlignment: Text.AlignHCenter
                Layout.fillWidth: true
                Accessible.ignored: true
            }
        }
    }
}
