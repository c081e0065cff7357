import QtQuick
import QtQuick.Layouts
import Quillmar

// A thing that may be done as well: the brand's colour on a breath of itself.
Pressable {
    id: control

    property string symbol
    property color tint: Theme.blue
    property color ink: Theme.linkText

    padding: Theme.within
    leftPadding: 20
    rightPadding: 20

    background: Rectangle {
        radius: control.corner
        color: Theme.alpha(control.tint, control.down ? 0.26 : control.hovered ? 0.18 : 0.12)
        opacity: control.enabled ? 1 : 0.5
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
            opacity: control.enabled ? 1 : 0.5

            Symbol {
                visible: control.symbol.length > 0
                name: control.symbol
                color: control.ink
                Layout.preferredWidth: 18
                Layout.preferredHeight: 18
            }
            Label {
                text: control.text
                font: Theme.headline
                color: control.ink
                lineHeight: 1
                horizontalAlignment: Text.AlignHCenter
                Layout.fillWidth: true
                Accessible.ignored: true
            }
        }
    }
}
