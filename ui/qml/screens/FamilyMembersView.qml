import QtQuick
import QtQuick.Layouts
import Quillmar

Page {
    id: page

    required property var screen

    centered: screen.content !== "family"
    topSpace: Theme.gap
    spacing: Theme.gap
    bar: NavigationBar {
        title: page.screen.title
        leading: TextLink {
            text: page.screen.doneTitle
            strong: true
            effect: page.screen.done
        }
        trailing: IconButton {
            visible: page.screen.showsInviteButton
            text: qsTr("Invite")
            symbol: page.screen.inviteIcon
            effect: page.screen.createInvitation
        }
    }

    Stage {
        shown: page.screen.content === "loading"

        LargeSpinner {
            text: page.screen.loadingText
            Layout.fillWidth: true
        }
    }
    Stage {
        shown: page.screen.content === "failure"
        first: again

        EmptyState {
            symbol: page.screen.failureIcon
            heading: page.screen.failureText
            Layout.fillWidth: true
        }
        SecondaryButton {
            id: again
            symbol: "arrow.clockwise"
            text: page.screen.tryAgainTitle
            effect: page.screen.tryAgain
            Layout.alignment: Qt.AlignHCenter
        }
    }
    Stage {
        shown: page.screen.content === "family"
        spacing: Theme.gap

        Card {
            visible: page.screen.familyName !== null
            padding: 20
            Layout.fillWidth: true

            RowLayout {
                spacing: Theme.gap
                Layout.fillWidth: true

                GradientPlate {
                    implicitWidth: 56
                    implicitHeight: 56
                    radius: 17
                    from: Theme.blue
                    to: Theme.blueDark

                    Symbol {
                        anchors.centerIn: parent
                        width: 30
                        height: 30
                        name: page.screen.familyIcon
                        color: Theme.onBrand
                    }
                }
                ColumnLayout {
                    spacing: 4
                    Layout.fillWidth: true

                    Label {
                        text: page.screen.familyName ?? ""
                        font: Theme.title
                        lineHeight: 1.1
                        maximumLineCount: 2
                        elide: Text.ElideRight
                        Layout.fillWidth: true
                        Accessible.role: Accessible.Heading
                    }
                    Label {
                        text: page.screen.standing
                        font: Theme.callout
                        color: Theme.cardSecondaryText
                        Layout.fillWidth: true
                    }
                }
            }
        }
        GroupedSection {
            header: page.screen.membersSection

            Repeater {
                model: page.screen.memberRows
                PersonRow {
                    required property var modelData
                    required property int index

                    first: index === 0
                    letters: modelData.initials
                    name: modelData.displayName
                    detail: modelData.email ?? ""
                    status: modelData.status
                    statusTint: Theme.tint(modelData.statusColor)
                    effect: modelData.edit
                }
            }
        }
        GroupedSection {
            visible: page.screen.showsInvitations
            header: page.screen.invitationsSection

            Repeater {
                model: page.screen.invitationRows
                Item {
                    id: invitation

                    required property var modelData
                    required property int index

                    width: parent ? parent.width : 0
                    implicitHeight: Math.max(60, line.implicitHeight + Theme.gap)
                    Accessible.role: Accessible.ListItem
                    Accessible.name: modelData.title
                    Accessible.description: modelData.expiry

                    Rectangle {
                        anchors.left: parent.left
                        anchors.right: parent.right
                        anchors.leftMargin: Theme.gap
                        height: 1
                        visible: invitation.index > 0
                        color: Theme.separator
                    }
                    RowLayout {
                        id: line
                        anchors.left: parent.left
                        anchors.right: parent.right
                        anchors.leftMargin: Theme.gap
                        anchors.rightMargin: 4
                        anchors.verticalCenter: parent.verticalCenter
                        spacing: Theme.between

                        ColumnLayout {
                            spacing: 3
                            Layout.fillWidth: true

                            Label {
                                text: invitation.modelData.title
                                lineHeight: 1.1
                                Layout.fillWidth: true
                                Accessible.ignored: true
                            }
                            Label {
                                text: invitation.modelData.expiry
                                font: Theme.footnote
                                color: Theme.ink(invitation.modelData.expiryColor)
                                lineHeight: 1.1
                                Layout.fillWidth: true
                                Accessible.ignored: true
                            }
                        }
                        IconButton {
                            text: qsTr("Revoke") + " " + invitation.modelData.title
                            symbol: invitation.modelData.revokeIcon
                            ink: Theme.dangerText
                            effect: invitation.modelData.revoke
                        }
                    }
                }
            }
        }
    }

    Alert {
        shown: page.screen.showRemoveConfirmation
        title: page.screen.removeTitle
        message: page.screen.removeText

        AlertButton {
            text: page.screen.cancelTitle
            role: AlertButton.Cancel
            onClicked: page.screen.cancelRemove.trigger()
        }
        AlertButton {
            text: page.screen.confirmTitle
            role: AlertButton.Destructive
            onClicked: page.screen.confirmRemove.trigger()
        }
    }
    ErrorAlert { screen: page.screen }
}
