import QtQuick
import Quillmar

// Shows one screen at a time and cross-fades to the next.
FocusScope {
    id: host

    property var screen: null
    property Item current: null

    onScreenChanged: {
        const former = current
        current = screen ? view.createObject(host, { screen: screen }) : null
        if (current) {
            current.forceActiveFocus()
            if (former) {
                current.fadeIn()
            }
        }
        if (former) {
            former.fadeOut()
        }
    }

    Component {
        id: view

        ScreenView {
            id: shown

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
