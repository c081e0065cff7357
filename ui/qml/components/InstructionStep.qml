import QtQuick
import QtQuick.Layouts
import Quillmar

// A numbered step, joined to the next one by a line unless it is the last.
RowLayout {
    id: step

    property int number
    property string title
    property string description
    property bool last: false

    spacing: Theme.gap
    Accessible.role: Accessible.ListItem
    Accessible.name: title
    Accessible.description: description

    Item {
        implicitWidth: 32
        Layout.fillHeight: true

        Rectangle {
            x: 15
            y: 36
            width: 2
            height: parent.height - 36
            visible: !step.last
            radius: 1
            color: Theme.alpha(Theme.blue, 0.25)
        }
        Rectangle {
            width: 32
            height: 32
            radius: 16
            color: Theme.alpha(Theme.blue, 0.13)

            Label {
                anchors.centerIn: parent
                text: step.number
                font: Theme.footnoteStrong
                color: Theme.linkText
                lineHeight: 1
                Accessible.ignored: true
            }
        }
    }
    ColumnLayout {
        spacing: 5
        Layout.bottomMargin: step.last ? 0 : 20
        Layout.topMargin: 4
        Layout.alignment: Qt.AlignTop

        Label {
            text: step.title
            font: Theme.headline
            Layout.fillWidth: true
            Accessible.ignored: true
        }
        Label {
            text: step.description
            font: Theme.callout
            color: Theme.cardSecondaryText
            Layout.fillWidth: true
            Accessible.ignored: true
        }
    }
}
