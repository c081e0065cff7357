import QtQuick
import QtQuick.Layouts
import Quillmar

// The title of a page's section, with a count, a spinner or a badge after it and a caption under it.
ColumnLayout {
    id: title

    property string text
    property string count
    property string caption
    property string badge
    property bool busy: false
    readonly property bool alone: count.length + badge.length === 0 && !busy

    spacing: 4
    Layout.fillWidth: true
    Layout.topMargin: Theme.between

    RowLayout {
        spacing: Theme.within
        Layout.fillWidth: true

        Label {
            text: title.text
            font: Theme.subtitle
            lineHeight: 1.1
            Layout.fillWidth: true
            // Layouts round to whole points; a fraction less would break the line.
            Layout.maximumWidth: title.alone ? Infinity : Math.ceil(implicitWidth) + 1
            Accessible.role: Accessible.Heading
        }
        Badge {
            visible: title.count.length > 0
            text: title.count
        }
        Badge {
            visible: title.badge.length > 0
            text: title.badge
            tint: Theme.orange
            ink: Theme.warningText
        }
        Spinner {
            running: title.busy
            size: 16
        }
        Item {
            visible: !title.alone
            Layout.fillWidth: true
        }
    }
    Label {
        visible: text.length > 0
        text: title.caption
        font: Theme.footnote
        color: Theme.secondaryText
        Layout.fillWidth: true
    }
}
