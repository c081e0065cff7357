import QtQuick
import QtQuick.Layouts
import Quillmar

// A site in a list, with its number and a bar for it. Pressing it chooses it.
Pressable {
    id: row

    // Has `name`, `number`, `allowed`, `blocked`, `isSelected` and `choose`.
    required property var bar
    property bool first: false
    // The number is under the name if they do not fit on one line.
    readonly property bool below: Math.min(nameWidth.advanceWidth, width / 2) + numberWidth.advanceWidth + 4 * Theme.gap > width
    signal chosen(bool byKey)

    width: parent ? parent.width : 0
    implicitHeight: Math.max(Theme.target + 12, implicitContentHeight + 2 * padding)
    padding: Theme.between
    leftPadding: Theme.gap
    rightPadding: Theme.gap
    pressedScale: 1
    text: bar.name
    onClicked: {
        const byKey = visualFocus
        bar.choose.trigger()
        chosen(byKey)
    }
    Accessible.description: bar.number
    Accessible.checkable: true
    Accessible.checked: bar.isSelected

    TextMetrics {
        id: nameWidth
        font: Theme.callout
        text: row.bar.name
    }
    TextMetrics {
        id: numberWidth
        font: Theme.footnote
        text: row.bar.number
    }

    background: Item {
        Rectangle {
            anchors.fill: parent
            radius: row.corner
            color: row.bar.isSelected ? Theme.alpha(Theme.blue, Theme.dark ? 0.24 : 0.12)
                                      : Theme.alpha(Theme.text, row.down ? 0.1 : row.hovered ? 0.05 : 0)
        }
        Rectangle {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.leftMargin: Theme.gap
            height: 1
            visible: !row.first
            color: Theme.separator
        }
    }
    contentItem: ColumnLayout {
        spacing: 8

        GridLayout {
            columns: row.below ? 1 : 2
            columnSpacing: Theme.between
            rowSpacing: 4
            Layout.fillWidth: true

            SiteName {
                line: row.bar.name
                font: Theme.callout
                Layout.fillWidth: true
                Accessible.ignored: true
            }
            Label {
                text: row.bar.number
                font: Theme.footnote
                color: row.bar.isSelected ? Theme.text : Theme.cardSecondaryText
                lineHeight: 1
                Layout.maximumWidth: row.width - 2 * Theme.gap
                Accessible.ignored: true
            }
        }
        Rectangle {
            id: track
            implicitHeight: 6
            radius: 3
            color: Theme.alpha(Theme.text, 0.08)
            Layout.fillWidth: true

            Row {
                id: parts
                anchors.left: parent.left

                // A share that is not zero is drawn wide enough to be seen.
                function part(share) { return share > 0 ? Math.max(6, share * track.width) : 0 }

                Rectangle {
                    width: parts.part(row.bar.allowed)
                    height: 6
                    radius: 3
                    color: Theme.blue
                }
                Rectangle {
                    width: parts.part(row.bar.blocked)
                    height: 6
                    radius: 3
                    color: Theme.red
                }
            }
        }
    }
}
