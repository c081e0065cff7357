import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Quillmar

// The keys that do something on a screen now.
T.Popup {
    id: popup

    required property var keys
    readonly property Item area: T.Overlay.overlay
    readonly property real areaWidth: area ? area.width : 0
    readonly property real areaHeight: area ? area.height : 0

    parent: area
    width: Math.min(Math.round(420 * Math.max(1, Math.min(Theme.textScale, 1.5))), areaWidth - 32)
    height: Math.min(body.implicitHeight + 2 * padding, areaHeight - 32)
    x: Math.round((areaWidth - width) / 2)
    y: Math.round((areaHeight - height) / 2)
    modal: true
    dim: true
    focus: true
    padding: Theme.gap
    closePolicy: T.Popup.CloseOnPressOutside

    T.Overlay.modal: Rectangle {
        color: Theme.dim
        Behavior on opacity { NumberAnimation { duration: Theme.quick } }
    }

    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.quick }
    }
    exit: Transition {
        NumberAnimation { property: "opacity"; to: 0; duration: Theme.quick }
    }

    background: Rectangle {
        radius: Theme.sheetCorner
        color: Theme.raised
        border.width: Theme.dark ? 1 : 0
        border.color: Theme.separator

        Elevation {
            z: -1
            anchors.fill: parent
            corner: Theme.sheetCorner
            depth: 24
        }
    }

    contentItem: FocusScope {
        focus: true
        LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
        LayoutMirroring.childrenInherit: true
        Keys.onEscapePressed: popup.close()
        Keys.onPressed: event => {
            const way = ({ [Qt.Key_Up]: -60, [Qt.Key_Down]: 60 })[event.key] ?? 0
            if (event.key === Qt.Key_F1) {
                popup.close()
            } else if (way !== 0) {
                const end = scroll.contentHeight - scroll.height
                scroll.contentY = Math.max(0, Math.min(end, scroll.contentY + way))
            } else {
                return
            }
            event.accepted = true
        }
        Accessible.role: Accessible.Dialog
        Accessible.name: heading.text

        ScrollMarker {
            flickable: scroll
            anchors.right: parent.right
            anchors.rightMargin: -popup.padding
        }
        Flickable {
            id: scroll
            anchors.fill: parent
            contentWidth: width
            contentHeight: body.implicitHeight
            boundsBehavior: Flickable.StopAtBounds
            clip: contentHeight > height

            ColumnLayout {
                id: body
                width: scroll.width
                spacing: 0

                RowLayout {
                    Layout.fillWidth: true

                    Label {
                        id: heading
                        text: qsTr("Keys")
                        font: Theme.subtitle
                        lineHeight: 1
                        Layout.fillWidth: true
                        Accessible.role: Accessible.Heading
                    }
                    IconButton {
                        text: qsTr("Close")
                        symbol: "xmark"
                        symbolSize: 20
                        ink: Theme.secondaryText
                        focus: true
                        onClicked: popup.close()
                    }
                }
                Repeater {
                    model: popup.keys

                    ListRow {
                        required property var modelData
                        required property int index

                        first: index === 0
                        title: modelData.effect
                        value: modelData.keys
                        Layout.fillWidth: true
                    }
                }
            }
        }
    }
}
