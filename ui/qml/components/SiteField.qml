import QtQuick
import QtQuick.Layouts
import Quillmar

// A field for a site to add; only the button at its end adds it.
RowLayout {
    id: field

    property alias value: box.value
    property alias placeholder: box.placeholderText
    property string symbol: "plus.circle.fill"
    property var effect: null
    signal edited(string text)

    spacing: Theme.within
    Layout.fillWidth: true

    TextBox {
        id: box
        inputMethodHints: Qt.ImhUrlCharactersOnly | Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
        onEdited: text => field.edited(text)
        Layout.fillWidth: true
    }
    IconButton {
        text: qsTr("Add")
        // A page has several of these.
        Accessible.description: field.placeholder
        symbol: field.symbol
        symbolSize: 30
        effect: field.effect
    }
}
