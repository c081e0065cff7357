import QtQuick
import Quillmar

// What every button is: pressed by pointer, Space or Return, and bound to an action of a model where it has one.
PressArea {
    id: control

    property var effect: null
    // Out of use a button is grey. A screen that leaves is disabled as a whole, and does not turn grey for it.
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
