pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Quillmar

// The sites that were just added, over the end of a page, each with a button that takes it back.
Column {
    id: list

    property alias rows: repeater.model
    property real contentWidth
    // The page leaves so much room under its content.
    readonly property real space: repeater.count > 0 ? height + Theme.between : 0

    anchors.bottom: parent.bottom
    anchors.bottomMargin: Theme.gap
    anchors.horizontalCenter: parent.horizontalCenter
    // Not so wide that a button is far from its site.
    width: Math.min(contentWidth, Theme.contentWidth)
    spacing: Theme.within

    Repeater {
        id: repeater

        Rectangle {
            id: site

            required property var modelData
            readonly property string words: modelData.verb + " " + modelData.domain

            width: list.width
            height: Math.max(Theme.target + 8, line.implicitHeight + Theme.gap)
            radius: Theme.corner
            color: Theme.raised
            border.width: 1
            border.color: Theme.separator
            Accessible.role: Accessible.AlertMessage
            Accessible.name: words

            Elevation {
                z: -1
                anchors.fill: parent
            }
            // Keeps presses from the content under it.
            MouseArea {
                anchors.fill: parent
                hoverEnabled: true
            }
            RowLayout {
                id: line
                anchors.fill: parent
                anchors.leftMargin: Theme.gap
                anchors.rightMargin: Theme.within
                spacing: Theme.between

                Symbol {
                    name: site.modelData.icon
                    color: Theme.tint(site.modelData.iconColor)
                    Layout.preferredWidth: 22
                    Layout.preferredHeight: 22
                }
                ColumnLayout {
                    spacing: 2
                    Layout.fillWidth: true

                    Label {
                        text: site.modelData.verb
                        font: Theme.footnote
                        color: Theme.cardSecondaryText
                        lineHeight: 1
                        Accessible.ignored: true
                    }
                    SiteName {
                        line: site.modelData.domain
                        font: Theme.callout
                        Layout.fillWidth: true
                        Accessible.ignored: true
                    }
                }
                RowButton {
                    text: site.modelData.undoTitle + ": " + site.words
                    label: site.modelData.undoTitle
                    effect: site.modelData.undo
                }
            }
        }
    }
}
