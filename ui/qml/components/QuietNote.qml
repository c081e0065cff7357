import QtQuick
import QtQuick.Layouts
import Quillmar

// What stands in the place of a list that is empty.
Card {
    id: note

    property string heading
    property string text
    readonly property bool visualFocus: activeFocus
    // Where the focus has come here with a list that went, the Tab key leads on from here.
    activeFocusOnTab: activeFocus

    padding: 20
    spacing: 4
    Layout.fillWidth: true

    Label {
        visible: note.heading.length > 0
        text: note.heading
        font: Theme.callout
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }
    Label {
        visible: note.text.length > 0
        text: note.text
        font: Theme.footnote
        color: Theme.cardSecondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }

    FocusRing {
        parent: note
        around: note
    }
}
