import QtQuick
import Quillmar

// The base of all buttons: pressed by pointer, Space or Return, and bound to a model's action if it has one.
PressArea {
    id: control

    property var effect: null
    // A disabled button is grey. A screen that fades out is disabled as a whole, but its buttons keep their colours.
    property bool inUse: !effect || effect.enabled
    property real corner: Theme.corner
    property real pressedScale: 0.98
    // What a control without a word does; shown when the pointer or the focus rests on it.
    property string tip
    property bool pointed: hovered
    readonly property bool rested: tip.length > 0 && (pointed || visualFocus) && !down
    readonly property bool mirrored: LayoutMirroring.enabled

    implicitWidth: Math.max(Theme.target, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: Math.max(Theme.target, implicitContentHeight + 2 * padding)
    enabled: inUse
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    scale: down && !Theme.reducedMotion ? pressedScale : 1
    onClicked: if (effect) effect.trigger()
    onRestedChanged: rested ? Tips.offer(control) : Tips.withdraw(control)
    Component.onDestruction: Tips.withdraw(control)
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.pressed: down

    Behavior on scale { NumberAnimation { duration: Theme.quick; easing.type: Easing.OutQuad } }

    FocusRing {
        around: control
        corner: control.corner
        z: 1
    }
}
