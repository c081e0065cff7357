import QtQuick
import QtQuick.Layouts
import Quillmar

// A person in a GroupedSection: initials, name, details, and a state in words and with a dot. With an enabled action
// it is a button with a chevron.
ActionRow {
    id: row

    property string letters
    property string name
    property string detail
    property string status
    property color statusTint: Theme.offline

    text: name
    // A plain row is a list item: it does not react to a press.
    readonly property bool plain: effect === null || !effect.enabled
    enabled: true
    hoverEnabled: !plain
    focusPolicy: plain ? Qt.NoFocus : Qt.StrongFocus
    chevron: !plain
    Accessible.role: plain ? Accessible.ListItem : Accessible.Button
    Accessible.description: [detail, status].filter(text => text.length > 0).join(", ") // qmllint disable type

    contentItem: RowLayout {
        spacing: Theme.between

        Avatar {
            letters: row.letters
            size: 42
        }
        ColumnLayout {
            spacing: 2
            Layout.fillWidth: true

            Label {
                text: row.text
                font: Theme.headline
                lineHeight: 1.1
                maximumLineCount: 2
                elide: Text.ElideRight
                Layout.fillWidth: true
                Accessible.ignored: true
            }
            OneLine {
                visible: text.length > 0
                line: row.detail
                font: Theme.footnote
                color: Theme.cardSecondaryText
                lineHeight: 1.1
                elide: Text.ElideMiddle
                Layout.fillWidth: true
                Accessible.ignored: true
            }
        }
        RowLayout {
            visible: row.status.length > 0
            spacing: 6

            Rectangle {
                implicitWidth: 8
                implicitHeight: 8
                radius: 4
                color: row.statusTint
            }
            Label {
                text: row.status
                font: Theme.footnote
                color: Theme.cardSecondaryText
                lineHeight: 1
                Accessible.ignored: true
            }
        }
        Symbol {
            visible: row.chevron
            implicitWidth: 16
            implicitHeight: 16
            name: row.mirrored ? "chevron.left" : "chevron.right"
            color: Theme.cardSecondaryText
        }
    }
}
