import QtQuick
import QtQuick.Layouts
import Quillmar

// A child on the dashboard: pressing the card opens the child, its button adds a device.
Pressable {
    id: card

    required property var child
    // Its child's page stands beside the cards.
    property bool chosen: false
    // The filter's text, marked in the name.
    property string part

    text: child.name
    effect: child.tap
    corner: 18
    padding: Theme.gap
    pressedScale: 0.99
    Accessible.name: child.spokenName
    Accessible.selected: chosen

    background: Rectangle {
        radius: card.corner
        color: Theme.raised
        border.width: card.chosen ? 2 : 1
        border.color: card.chosen ? Theme.blue
                    : card.hovered || card.visualFocus ? Theme.alpha(Theme.blue, 0.5) : Theme.separator
        Behavior on border.color { ColorAnimation { duration: Theme.quick } }

        Elevation {
            z: -1
            anchors.fill: parent
            corner: card.corner
            depth: card.hovered ? 16 : 10
        }
    }

    contentItem: ColumnLayout {
        spacing: Theme.between

        RowLayout {
            spacing: Theme.between
            Layout.fillWidth: true

            Avatar {
                letters: card.child.avatarLetter
                tint: Theme.tint(card.child.avatarColor)
                size: 52
            }
            ColumnLayout {
                spacing: 4
                Layout.fillWidth: true

                Label {
                    text: card.text
                    font: Theme.subtitle
                    lineHeight: 1.1
                    wrapMode: Text.Wrap
                    maximumLineCount: 2
                    elide: Text.ElideRight
                    Layout.fillWidth: true
                    Accessible.ignored: true

                    Matches { part: card.part }
                }
                RowLayout {
                    spacing: 6

                    Symbol {
                        name: card.child.deviceCountIcon
                        color: Theme.cardSecondaryText
                        Layout.preferredWidth: 15
                        Layout.preferredHeight: 15
                    }
                    Label {
                        text: card.child.deviceCount
                        font: Theme.footnote
                        color: Theme.cardSecondaryText
                        lineHeight: 1
                        Accessible.ignored: true
                    }
                    Rectangle {
                        implicitWidth: 8
                        implicitHeight: 8
                        radius: 4
                        color: Theme.tint(card.child.onlineDotColor)
                        Layout.leftMargin: 8
                    }
                    Label {
                        text: card.child.onlineText
                        font: Theme.footnote
                        color: Theme.cardSecondaryText
                        lineHeight: 1
                        Layout.fillWidth: true
                        Accessible.ignored: true
                    }
                }
            }
            Symbol {
                name: card.mirrored ? "chevron.left" : card.child.chevronIcon
                color: Theme.cardSecondaryText
                Layout.preferredWidth: 18
                Layout.preferredHeight: 18
            }
        }

        SecondaryButton {
            symbol: card.child.addDeviceIcon
            text: card.child.addDeviceTitle
            effect: card.child.addDevice
            // Every card has this button, and a screen reader does not tell whose it is.
            Accessible.description: card.text
            Layout.fillWidth: true
        }

        Rectangle {
            visible: lines.count > 0
            implicitHeight: deviceList.implicitHeight + 2 * Theme.between
            radius: Theme.corner
            color: Theme.alpha(Theme.text, 0.05)
            Layout.fillWidth: true

            ColumnLayout {
                id: deviceList
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                anchors.leftMargin: Theme.between
                anchors.rightMargin: Theme.between
                spacing: 10

                Repeater {
                    id: lines
                    model: card.child.deviceLines

                    RowLayout {
                        id: line

                        required property var modelData

                        spacing: 10
                        Layout.fillWidth: true
                        Accessible.role: Accessible.ListItem
                        Accessible.name: line.modelData.name + ", " + dot.words

                        Symbol {
                            name: line.modelData.icon
                            color: Theme.tint(line.modelData.iconColor)
                            Layout.preferredWidth: 18
                            Layout.preferredHeight: 18
                        }
                        Label {
                            text: line.modelData.name
                            font: Theme.callout
                            lineHeight: 1
                            wrapMode: Text.NoWrap
                            elide: Text.ElideRight
                            maximumLineCount: 1
                            Layout.fillWidth: true
                            Accessible.ignored: true
                        }
                        OnlineDot {
                            id: dot
                            Accessible.ignored: true
                            online: line.modelData.isOnline
                            size: 8
                        }
                    }
                }
                Label {
                    visible: text.length > 0
                    text: card.child.moreText
                    font: Theme.footnote
                    color: Theme.cardSecondaryText
                    lineHeight: 1
                    leftPadding: 28
                }
            }
        }
    }
}
