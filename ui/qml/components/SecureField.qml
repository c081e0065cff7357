import QtQuick
import Quillmar

// A labelled password field; its text can be shown on request.
LabelledField {
    id: field

    property bool revealed: false

    echoMode: revealed ? TextInput.Normal : TextInput.Password
    inputMethodHints: Qt.ImhHiddenText | Qt.ImhSensitiveData | Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
    endSpace: Theme.target - Theme.within

    IconButton {
        text: field.revealed ? qsTr("Hide password") : qsTr("Show password")
        Accessible.description: field.title
        symbol: field.revealed ? "eye.slash" : "eye"
        symbolSize: 20
        ink: Theme.cardSecondaryText
        onClicked: field.revealed = !field.revealed
    }
}
