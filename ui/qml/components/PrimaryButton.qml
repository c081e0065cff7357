import QtQuick
import QtQuick.Layouts
import Quillmar

// The one thing to do on a screen. Busy, it turns its spinner in place of its label; spinning, beside it.
Pressable {
    id: control

    property bool busy: false
    property bool spinning: false
    property string symbol

    implicitHeight: Math.max(Theme.primaryTarget, implicitContentHeight + 2 * padding)
    padding: Theme.within
    leftPadding: Theme.section
    rightPadding: Theme.section

    background: GradientPlate {
        readonly property bool inUse: control.enabled || control.busy || control.spinning
        radius: control.corner
        from: inUse ? Theme.blue : Theme.outOfUse
        to: inUse ? Theme.blueDark : Theme.outOfUse

        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: control.down ? "#000000" : "#FFFFFF"
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
                color: text.color
                size: 20
            }
            Symbol {
                visible: control.symbol.length > 0 && !control.spinning
                name: control.symbol
                color: text.color
                Layout.preferredWidth: 20
                Layout.preferredHeight: 20
            }
            Label {
                id: text
                text: control.text
                font: Theme.headline
                color: control.enabled || control.spinning ? Theme.onBrand : Theme.outOfUseText
                lineHeight: 1
                horizontalAlignment: Text.AlignHCenter
                Layout.fillWidth: true
                Accessible.ignored: true
            }
        }

        Spinner {
            anchors.centerIn: parent
            running: control.busy
            color: Theme.onBrand
        }
    }
}
