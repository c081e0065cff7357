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
    readonly property bool mirrored: LayoutMirroring.enabled

    implicitWidth: Math.max(Theme.target, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: Math.max(Theme.target, implicitContentHeight + 2 * padding)
    enabled: inUse
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    scale: down && !Theme.reducedMotion ? pressedScale : 1
    onClicked: if (effect) effect.trigger()
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
