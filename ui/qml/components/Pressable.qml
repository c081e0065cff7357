import QtQuick
import QtQuick.Templates as T
import Quillmar

// What every button is: pressed by pointer, Space or Return, and bound to an action of a model where it has one.
T.AbstractButton {
    id: control

    property var effect: null
    property real corner: Theme.corner
    property real pressedScale: 0.98

    implicitWidth: Math.max(Theme.target, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: Math.max(Theme.target, implicitContentHeight + topPadding + bottomPadding)
    enabled: !effect || effect.enabled
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    scale: down && !Theme.reducedMotion ? pressedScale : 1
    onClicked: if (effect) effect.trigger()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    Accessible.role: Accessible.Button
    Accessible.name: text

    Behavior on scale { NumberAnimation { duration: Theme.quick; easing.type: Easing.OutQuad } }

    HoverHandler {
        enabled: control.enabled
        cursorShape: Qt.PointingHandCursor
    }

    FocusRing {
        around: control
        corner: control.corner
        z: 1
    }
}
