import QtQuick
import Quillmar

// A button as an Alert draws it.
Pressable {
    id: answer

    property AlertButton button
    readonly property bool isDefault: button.role === AlertButton.Default
    readonly property bool isDestructive: button.role === AlertButton.Destructive

    text: button.text
    leftPadding: Theme.within
    rightPadding: Theme.within
    corner: 10

    background: Rectangle {
        readonly property color ground: answer.isDefault ? Theme.blueDark
                                      : answer.isDestructive ? Theme.red : Theme.text
        radius: answer.corner
        color: answer.isDefault ? ground : Theme.alpha(ground, answer.isDestructive ? 0.12 : Theme.dark ? 0.2 : 0.07)

        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: answer.isDefault ? Theme.onBrand : Theme.text
            opacity: answer.down ? 0.12 : answer.hovered ? 0.06 : 0
        }
    }
    contentItem: Label {
        text: answer.text
        font: Theme.headline
        color: answer.isDefault ? Theme.onBrand : answer.isDestructive ? Theme.dangerText : Theme.text
        lineHeight: 1
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
