import QtQuick
import QtQuick.Layouts
import Quillmar

// The placeholder of an empty list.
Card {
    id: note

    property string heading
    property string text
    readonly property bool visualFocus: activeFocus
    // While it holds the focus of a list that became empty, Tab continues from here.
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
