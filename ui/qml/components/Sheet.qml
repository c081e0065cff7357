import QtQuick
import QtQuick.Templates as T
import Quillmar

// A screen presented by another: a full page that slides up in a narrow window, a centred card in a wide one, as high
// as its content. While there is a `pane`, the screen stands there instead. It shows `screen` until that becomes null;
// `dismissed` asks the presenting model to remove it.
T.Popup {
    id: sheet

    property var screen: null
    property Item pane: null
    // The part of the window that the card is centred over, an item of the window's size or a child of one; null: all
    // of the window.
    property Item ground: null
    // Keeps the content while the sheet slides out.
    property var shownScreen: null
    readonly property Item area: T.Overlay.overlay
    readonly property real areaWidth: area ? area.width : 0
    readonly property real areaHeight: area ? area.height : 0
    readonly property bool card: areaWidth >= Theme.regularWidth
    readonly property real groundX: ground ? ground.x : 0
    readonly property real groundWidth: ground ? ground.width : areaWidth
    readonly property real maximumHeight: areaHeight - 80
    readonly property real neededHeight: content.implicitHeight
    readonly property real restingY: card ? Math.round((areaHeight - height) / 2) : 0
    property bool over: false
    // The screen moves between sheet and pane, and stays open.
    property bool moving: false
    property real travelled: 1

    signal dismissed
    // Emitted when the screen in the pane, which had the focus, has closed.
    signal left

    parent: area
    width: card ? Math.min(host.current?.sheetWidth ?? Theme.sheetWidth, groundWidth - 80) : areaWidth
    height: card ? Math.min(neededHeight, maximumHeight) : areaHeight
    x: card ? Math.round(groundX + (groundWidth - width) / 2) : 0
    y: restingY + Math.round((1 - travelled) * (areaHeight - restingY))
    visible: over
    modal: true
    dim: true
    focus: true
    padding: 0
    closePolicy: T.Popup.NoAutoClose

    onScreenChanged: {
        if (pane && !screen && content.activeFocus) {
            left()
        }
        if (pane || screen) {
            show(screen)
        }
        over = !pane && screen !== null
    }
    onClosed: if (!pane && !screen) show(null)
    // Assigning the same screen again would count as a change.
    function show(next) {
        if (next !== shownScreen) {
            shownScreen = next
        }
    }

    onPaneChanged: {
        const focused = content.Window.activeFocusItem
        moving = true
        host.holdStill(true)
        if (pane) {
            content.parent = pane
            show(screen)
            over = false
        } else {
            over = screen !== null
            content.parent = contentItem
            Stacking.lower(contentItem.parent)
        }
        if (focused && (pane || isWithin(focused, content) || isWithin(focused, area))) {
            focused.forceActiveFocus()
        }
        host.holdStill(false)
        moving = false
    }
    Component.onCompleted: content.parent = pane ?? contentItem

    function isWithin(item, outer) {
        for (let above = item; above; above = above.parent) {
            if (above === outer) {
                return true
            }
        }
        return false
    }

    T.Overlay.modal: Rectangle {
        color: Theme.dim
        Behavior on opacity { NumberAnimation { duration: sheet.moving ? 0 : Theme.moderate } } // qmllint disable unqualified
    }

    enter: Transition {
        enabled: !sheet.moving
        NumberAnimation { property: "travelled"; from: Theme.reducedMotion ? 1 : 0; to: 1; duration: 300; easing.type: Easing.OutCubic }
        NumberAnimation { property: "opacity"; from: Theme.reducedMotion ? 0 : 1; to: 1; duration: Theme.moderate }
    }
    exit: Transition {
        enabled: !sheet.moving
        NumberAnimation { property: "travelled"; to: Theme.reducedMotion ? 1 : 0; duration: Theme.moderate; easing.type: Easing.InCubic }
        NumberAnimation { property: "opacity"; to: Theme.reducedMotion ? 0 : 1; duration: Theme.moderate }
    }

    background: Rectangle {
        radius: sheet.card ? Theme.sheetCorner : 0
        color: Theme.page
        border.width: sheet.card && Theme.dark ? 1 : 0
        border.color: Theme.separator

        Elevation {
            z: -1
            anchors.fill: parent
            visible: sheet.card
            corner: Theme.sheetCorner
            depth: 30
        }
    }

    contentItem: FocusScope { focus: true }

    readonly property Item content: FocusScope {
        id: content

        readonly property bool inset: sheet.card && !sheet.pane

        anchors.fill: parent
        implicitHeight: host.implicitHeight + host.anchors.topMargin + host.anchors.bottomMargin
        focus: true
        Accessible.role: sheet.pane ? Accessible.Pane : Accessible.Dialog
        Accessible.name: sheet.shownScreen?.title ?? sheet.shownScreen?.heading ?? sheet.shownScreen?.name ?? ""
        LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
        LayoutMirroring.childrenInherit: true
        // Escape closes a screen that has no control of its own for that.
        Keys.onEscapePressed: sheet.dismissed()

        // Inset, so that the square page stays within the card's rounded corners.
        ScreenHost {
            id: host
            anchors.fill: parent
            anchors.topMargin: content.inset ? Theme.sheetCorner / 2 : 0
            anchors.bottomMargin: content.inset ? Theme.sheetCorner / 2 : 0
            anchors.leftMargin: content.inset || sheet.pane ? 1 : 0
            anchors.rightMargin: content.inset ? 1 : 0
            focus: true
            takesFocus: sheet.pane !== null
            fadesFirst: sheet.pane !== null
            screen: sheet.shownScreen
            ground: sheet.pane ?? sheet.ground
        }
        IconButton {
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: Theme.within
            visible: host.current?.closable ?? false
            text: qsTr("Close")
            symbol: "xmark"
            symbolSize: 20
            ink: Theme.secondaryText
            onClicked: sheet.dismissed()
        }
    }
}
