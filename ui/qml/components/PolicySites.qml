pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Quillmar

// The sites in a list of the policy, each with a button that removes it, or a placeholder.
ColumnLayout {
    id: list

    property var rows
    property string emptyText
    // The filter's text, marked in the names.
    property string part
    property string symbol
    property color tint: Theme.green

    Layout.fillWidth: true

    RowGround {
        id: sites
        model: list.rows
        placeholder: noSites

        Item {
            id: site

            required property var modelData
            required property int index
            readonly property string domain: modelData.domain

            width: parent ? parent.width : 0
            implicitHeight: Math.max(Theme.target + 4, line.implicitHeight + Theme.within)
            Accessible.role: Accessible.ListItem
            Accessible.name: domain

            Rectangle {
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.leftMargin: Theme.gap + 22 + Theme.between
                height: 1
                visible: site.index > 0
                color: Theme.separator
            }
            RowLayout {
                id: line
                anchors.fill: parent
                anchors.leftMargin: Theme.gap
                anchors.rightMargin: 4
                spacing: Theme.between

                Symbol {
                    name: list.symbol
                    color: list.tint
                    Layout.preferredWidth: 22
                    Layout.preferredHeight: 22
                }
                SiteName {
                    line: site.domain
                    font: Theme.callout
                    Layout.fillWidth: true
                    Accessible.ignored: true

                    Matches { part: list.part }
                }
                IconButton {
                    text: site.modelData.removeTitle + " " + site.domain
                    symbol: site.modelData.removeIcon
                    symbolSize: 22
                    ink: Theme.dangerText
                    effect: site.modelData.remove
                }
            }
        }
    }
    QuietNote {
        id: noSites
        visible: sites.count === 0
        text: list.emptyText
    }
}
