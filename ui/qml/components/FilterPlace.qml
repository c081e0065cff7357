import QtQuick
import QtQuick.Layouts

// The field of a screen's filter, while it is open. The focus returns from it to where it was.
Loader {
    id: place

    required property var screen
    readonly property int asks: screen.filterAsks
    property Item former: null

    function show() {
        if (active && !item) {
            setSource("FilterField.qml", { screen: screen })
        }
    }

    active: screen.isFilterOpen
    visible: active
    Layout.fillWidth: true
    Component.onCompleted: show()
    onActiveChanged: {
        if (active) {
            former = Window.activeFocusItem
            show()
        } else if (former && former.visible && former.enabled) {
            former.forceActiveFocus()
        }
    }
    onAsksChanged: if (item) item.take() // qmllint disable type
}
