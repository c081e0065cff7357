import QtQuick
import Quillmar

// Shows one screen at a time and cross-fades to the next.
FocusScope {
    id: host

    property var screen: null
    property Item ground: null
    property Item current: null
    // False in a popup, which takes the focus itself.
    property bool takesFocus: true
    property bool fadesFirst: false

    implicitHeight: current ? current.implicitHeight : 0

    onScreenChanged: {
        const former = current
        current = screen ? view.createObject(host, { screen: screen }) : null
        if (current) {
            takesFocus ? current.forceActiveFocus() : current.focus = true
            if (former || fadesFirst) {
                current.fadeIn()
            }
        }
        if (former) {
            former.fadeOut()
        }
    }

    function holdStill(held) {
        if (current) {
            current.holdStill(held) // qmllint disable type
        }
    }

    Component {
        id: view

        ScreenView {
            id: shown

            ground: host.ground // qmllint disable unqualified

            function fadeIn() { entering.start() }
            function fadeOut() {
                enabled = false
                leaving.start()
            }

            anchors.fill: parent
            focus: true

            NumberAnimation {
                id: entering
                target: shown
                property: "opacity"
                from: 0
                to: 1
                duration: Theme.rerouting
                easing.type: Easing.InOutQuad
            }
            NumberAnimation {
                id: leaving
                target: shown
                property: "opacity"
                to: 0
                duration: Theme.rerouting
                easing.type: Easing.InOutQuad
                onFinished: shown.destroy()
            }
        }
    }
}
