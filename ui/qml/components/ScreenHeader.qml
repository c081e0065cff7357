import QtQuick
import QtQuick.Layouts
import Quillmar

// The logo, a title and a subtitle, at the top of screens without a bar.
ColumnLayout {
    id: header

    property string title
    property string text
    property int logoSize: 80
    property font titleFont: Theme.largeTitle

    spacing: Theme.within
    Layout.fillWidth: true

    Logo {
        size: header.logoSize
        Layout.alignment: Qt.AlignHCenter
        Layout.bottomMargin: Theme.between
    }
    Label {
        text: header.title
        font: header.titleFont
        lineHeight: 1.15
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
        Accessible.role: Accessible.Heading
    }
    Label {
        text: header.text
        color: Theme.secondaryText
        horizontalAlignment: Text.AlignHCenter
        Layout.fillWidth: true
    }
}
