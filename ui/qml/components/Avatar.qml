import QtQuick
import Quillmar

// A person's initials on a circle of the person's colour.
GradientPlate {
    id: avatar

    property string letters
    property color tint: Theme.blue
    property int size: 44

    implicitWidth: size
    implicitHeight: size
    radius: size / 2
    from: Qt.lighter(tint, 1.12)
    to: Qt.darker(tint, 1.25)

    Label {
        anchors.centerIn: parent
        width: parent.width
        text: avatar.letters
        font: Theme.display(avatar.size * 0.4 / Theme.textScale, Font.DemiBold, 0)
        color: Theme.onBrand
        lineHeight: 1
        wrapMode: Text.NoWrap
        elide: Text.ElideRight
        maximumLineCount: 1
        horizontalAlignment: Text.AlignHCenter
        Accessible.ignored: true
    }
}
