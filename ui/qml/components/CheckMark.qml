import QtQuick
import QtQuick.Templates as T
import Quillmar

// A checkbox, followed by its text.
T.CheckBox {
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
        x: control.mirrored ? control.width - width : 0
        y: (control.height - height) / 2
        width: 24
        height: 24
        radius: 7
        color: control.checked ? Theme.blue : "transparent"
        border.width: 2
        border.color: control.checked ? Theme.blue : Theme.edge
        opacity: control.enabled ? 1 : 0.5
        Behavior on color { ColorAnimation { duration: Theme.quick } }

        Symbol {
            anchors.centerIn: parent
            width: 16
            height: 16
            visible: control.checked
            name: "checkmark"
            color: Theme.onBrand
        }
        FocusRing {
            around: control
            anchors.fill: parent
            corner: parent.radius
        }
    }
    contentItem: Label {
        leftPadding: control.mirrored ? 0 : control.indicator.width + Theme.within + 2
        rightPadding: control.mirrored ? control.indicator.width + Theme.within + 2 : 0
        text: control.text
        font: Theme.callout
        lineHeight: 1
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
