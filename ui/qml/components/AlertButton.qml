import QtQml

// A button of an Alert.
QtObject {
    enum Role { Default, Cancel, Destructive }

    property string text
    property int role: AlertButton.Default
    signal clicked
}
