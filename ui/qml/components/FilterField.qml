import QtQuick
import QtQuick.Layouts
import Quillmar

// What the person looks for in the lists of a screen. Escape shows all rows again.
RowLayout {
    id: field

    required property var screen

    function take() {
        box.forceActiveFocus(Qt.ShortcutFocusReason)
        box.selectAll()
    }

    spacing: Theme.within
    Keys.onEscapePressed: field.screen.closeFilter.trigger()

    TextBox {
        id: box
        placeholderText: field.screen.filterPlaceholder
        value: field.screen.filterText
        // The page need not keep this field's place: filtering changes only the content below it, and it gets
        // the focus before it is laid out.
        keepsPlace: false
        inputMethodHints: Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
        leftPadding: Theme.gap + glass.width + Theme.within
        onEdited: text => field.screen.filterText = text
        Layout.fillWidth: true

        Symbol {
            id: glass
            x: LayoutMirroring.enabled ? box.width - width - Theme.gap : Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            width: 20
            height: 20
            name: "magnifyingglass"
            color: Theme.cardSecondaryText
        }
    }
    IconButton {
        text: field.screen.closeFilterTitle
        symbol: "xmark"
        symbolSize: 22
        effect: field.screen.closeFilter
    }
}
