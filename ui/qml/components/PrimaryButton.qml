import QtQuick
import QtQuick.Layouts
import Quillmar

// The main action of a screen. While `busy`, a spinner replaces the label; while `spinning`, it is beside the label.
Pressable {
    id: control

    property bool busy: false
    property bool spinning: false
    property string symbol
    readonly property color ink: inUse ? Theme.onBrand : Theme.outOfUseText

    implicitHeight: Math.max(Theme.primaryTarget, implicitContentHeight + 2 * padding)
    padding: Theme.within
    leftPadding: Theme.section
    rightPadding: Theme.section

    background: GradientPlate {
        radius: control.corner
        from: control.inUse ? Theme.blue : Theme.outOfUse
        to: control.inUse ? Theme.blueDark : Theme.outOfUse

        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: control.down ? Theme.shadow : Theme.onBrand
            opacity: control.down ? 0.14 : control.hovered && control.enabled ? 0.08 : 0
            Behavior on opacity { NumberAnimation { duration: Theme.quick } }
        }
    }

    contentItem: Item {
        implicitWidth: label.implicitWidth
        implicitHeight: label.implicitHeight

        RowLayout {
            id: label
            anchors.centerIn: parent
            width: Math.min(implicitWidth, parent.width)
            spacing: Theme.within
            visible: !control.busy

            Spinner {
                running: control.spinning
                color: control.ink
                size: 20
            }
            Symbol {
                visible: control.symbol.length > 0 && !control.spinning
                name: control.symbol
                color: control.ink
                Layout.preferredWidth: 20
                Layout.preferredHeight: 20
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

        Spinner {
            anchors.centerIn: parent
            running: control.busy
            color: control.ink
        }
    }
}
