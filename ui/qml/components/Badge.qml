import QtQuick
import QtQuick.Layouts
import Quillmar

// A word in a small pill, with a symbol so that it does not depend on colour alone.
Rectangle {
    id: badge

    property string text
    property string symbol
    property color tint: Theme.blue
    property color ink: Theme.linkText

    implicitWidth: row.implicitWidth + 16
    implicitHeight: row.implicitHeight + 8
    radius: height / 2
    // Faint, so that the word is readable on a card too.
    color: Theme.alpha(tint, Theme.dark ? 0.17 : 0.09)

    RowLayout {
        id: row
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 16)
        spacing: 4

        Symbol {
            visible: badge.symbol.length > 0
            name: badge.symbol
            color: badge.ink
            Layout.preferredWidth: 14
            Layout.preferredHeight: 14
        }
        Label {
            text: badge.text
            font: Theme.caption
            color: badge.ink
            lineHeight: 1
            wrapMode: Text.NoWrap
            elide: Text.ElideRight
            Layout.fillWidth: true
        }
    }
}
