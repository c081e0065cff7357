import QtQuick
import QtQuick.Layouts
import Quillmar

// A spinner for a whole screen, with a text that says what it waits for.
ColumnLayout {
    id: wait

    property string heading
    property string text

    spacing: Theme.within
    Accessible.role: Accessible.Indicator
    Accessible.name: heading

    Spinner {
        size: 40
        Layout.alignment: Qt.AlignHCenter
        Layout.bottomMargin: Theme.gap
    }
    Label {
        visible: text.length > 0
        text: wait.heading
        font: Theme.headline
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }
    Label {
        visible: text.length > 0
        text: wait.text
        font: Theme.callout
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }
}
