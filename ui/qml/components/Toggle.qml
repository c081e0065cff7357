import QtQuick
import QtQuick.Templates as T
import Quillmar

// A switch with its label before it.
T.Switch {
    id: control

    implicitWidth: implicitContentWidth + indicator.width + Theme.between
    implicitHeight: Math.max(Theme.target, implicitContentHeight)
    focusPolicy: Qt.StrongFocus
    Keys.onReturnPressed: flip()
    Keys.onEnterPressed: flip()
    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checked: checked
    // By itself, Qt would change `checked` without announcing that a person did it.
    Accessible.onToggleAction: flip()
    Accessible.onPressAction: flip()

    function flip() {
        toggle()
        toggled()
    }

    indicator: Rectangle {
        x: control.mirrored ? 0 : control.width - width
        y: (control.height - height) / 2
        width: 51
        height: 31
        radius: height / 2
        color: control.checked ? Theme.green : Theme.outOfUse
        border.width: 1.5
        border.color: control.checked ? Theme.positiveText : Theme.edge
        opacity: control.enabled ? 1 : 0.5
        Behavior on color { ColorAnimation { duration: Theme.moderate } }

        Rectangle {
            readonly property bool atEnd: control.checked !== control.mirrored
            x: atEnd ? parent.width - width - 2 : 2
            y: 2
            width: 27
            height: 27
            radius: width / 2
            color: Theme.onBrand
            Behavior on x { NumberAnimation { duration: Theme.travel; easing.type: Easing.OutQuad } }
        }
        FocusRing {
            around: control
            anchors.fill: parent
            corner: parent.radius
        }
    }
    contentItem: Label {
        leftPadding: control.mirrored ? control.indicator.width + Theme.between : 0
        rightPadding: control.mirrored ? 0 : control.indicator.width + Theme.between
        text: control.text
        lineHeight: 1
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
