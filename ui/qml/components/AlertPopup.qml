pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Quillmar

// The popup of an Alert. Escape presses the cancelling button, Return the default one, and the focus stays inside.
T.Popup {
    id: popup

    required property var alert
    readonly property var buttons: alert.buttons
    readonly property bool shown: alert.shown
    readonly property string title: alert.title
    readonly property string message: alert.message
    readonly property string label: alert.label
    readonly property string symbol: alert.symbol
    readonly property color tint: alert.tint
    readonly property Item area: T.Overlay.overlay
    readonly property real areaWidth: area ? area.width : 0
    readonly property real areaHeight: area ? area.height : 0
    // The buttons stand side by side if their texts fit, otherwise one above the other.
    readonly property bool stacked: buttons.length > 2 || Theme.textScale > 1.3
                                    || widestAnswer > (width - 2 * padding - Theme.within) / 2
    property real widestAnswer: 0
    property real growth: 1

    parent: area
    width: Math.min(Math.round(320 * Math.max(1, Math.min(Theme.textScale, 1.5))), areaWidth - 32)
    height: Math.min(implicitHeight, areaHeight - 32)
    implicitHeight: body.implicitHeight + 2 * Theme.gap
    x: Math.round((areaWidth - width) / 2)
    y: Math.round((areaHeight - height) / 2)
    visible: shown
    modal: true
    dim: true
    focus: true
    padding: Theme.gap
    closePolicy: T.Popup.NoAutoClose
    scale: growth
    onOpened: giveFocus()
    onAboutToShow: giveFocus()

    function find(role) {
        for (let i = 0; i < buttons.length; ++i) {
            if (buttons[i].role === role) {
                return i
            }
        }
        return -1
    }
    function press(index) {
        if (shown && index >= 0) {
            buttons[index].clicked()
        }
    }
    // Without a cancelling button, Escape presses the only button.
    function cancel() { press(Math.max(find(AlertButton.Cancel), buttons.length === 1 ? 0 : -1)) }
    function giveFocus() {
        const first = find(AlertButton.Default) >= 0 ? find(AlertButton.Default) : Math.max(0, find(AlertButton.Cancel))
        const item = answers.itemAt(first)
        if (item) {
            item.forceActiveFocus()
        }
    }

    T.Overlay.modal: Rectangle {
        color: Theme.dim
        Behavior on opacity { NumberAnimation { duration: Theme.quick } }
    }

    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: 200; easing.type: Easing.OutQuad }
        NumberAnimation { property: "growth"; from: Theme.reducedMotion ? 1 : 0.94; to: 1; duration: 200; easing.type: Easing.OutQuad }
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
        Keys.onEscapePressed: popup.cancel()
        Keys.onReturnPressed: popup.press(popup.find(AlertButton.Default))
        Keys.onEnterPressed: popup.press(popup.find(AlertButton.Default))
        Accessible.role: Accessible.AlertMessage
        Accessible.name: popup.title
        Accessible.description: popup.message

        Flickable {
            anchors.fill: parent
            contentHeight: body.implicitHeight
            interactive: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds
            clip: interactive

            ColumnLayout {
                id: body
                width: parent.width
                spacing: 6

                SymbolTile {
                    visible: popup.symbol.length > 0
                    symbol: popup.symbol
                    tint: popup.tint
                    size: 48
                    radius: 24
                    Layout.alignment: Qt.AlignHCenter
                    Layout.topMargin: 4
                    Layout.bottomMargin: 4
                }
                Badge {
                    visible: popup.label.length > 0
                    text: popup.label
                    tint: Theme.orange
                    ink: Theme.warningText
                    Layout.alignment: Qt.AlignHCenter
                }
                Label {
                    text: popup.title
                    font: Theme.headline
                    horizontalAlignment: Text.AlignHCenter
                    Layout.fillWidth: true
                    Layout.topMargin: popup.symbol.length > 0 ? 0 : 4
                    Accessible.role: Accessible.Heading
                }
                Label {
                    visible: text.length > 0
                    text: popup.message
                    font: Theme.callout
                    color: Theme.cardSecondaryText
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.Wrap
                    Layout.fillWidth: true
                }
                GridLayout {
                    columns: popup.stacked ? 1 : Math.max(1, answers.count)
                    columnSpacing: Theme.within
                    rowSpacing: Theme.within
                    Layout.fillWidth: true
                    Layout.topMargin: Theme.between

                    Repeater {
                        id: answers
                        model: popup.buttons.length
                        AlertAnswer {
                            required property int index
                            button: popup.buttons[index]
                            onClicked: popup.press(index)
                            onImplicitWidthChanged: popup.widestAnswer = Math.max(popup.widestAnswer, implicitWidth)
                            Layout.fillWidth: true
                            Layout.preferredWidth: 1
                        }
                    }
                }
            }
        }
    }
}
