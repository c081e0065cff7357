import QtQuick
import QtQuick.Layouts
import Quillmar

// The mark, a title and a line under it, as screens begin that stand on their own.
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
