import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Quillmar

// An item of a PopupMenu, bound to a model's action if it has one.
T.MenuItem {
    id: row

    property string symbol
    property var effect: null
    property bool destructive: false
    readonly property color ink: destructive ? Theme.dangerText : Theme.text

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(Theme.target, implicitContentHeight + 2 * Theme.within)
    leftPadding: Theme.between
    rightPadding: Theme.between
    enabled: !effect || effect.enabled
    onTriggered: if (effect) effect.trigger()
    Accessible.role: Accessible.MenuItem
    Accessible.name: text
    Accessible.onPressAction: if (enabled) clicked()

    background: Rectangle {
        radius: 9
        color: Theme.alpha(Theme.text, row.down ? 0.12 : row.highlighted || row.hovered ? 0.07 : 0)
    }
    contentItem: RowLayout {
        spacing: Theme.between
        opacity: row.enabled ? 1 : 0.4

        Symbol {
            visible: row.symbol.length > 0
            name: row.symbol
            color: row.ink
            Layout.preferredWidth: 20
            Layout.preferredHeight: 20
        }
        Label {
            text: row.text
            color: row.ink
            lineHeight: 1
            wrapMode: Text.NoWrap
            elide: Text.ElideRight
            verticalAlignment: Text.AlignVCenter
            Layout.fillWidth: true
            Accessible.ignored: true
        }
    }
}
