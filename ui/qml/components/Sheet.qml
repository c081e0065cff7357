import QtQuick
import QtQuick.Templates as T
import Quillmar

// A screen presented over another: a full page that slides up in a narrow window, a centred card in a wide one. It
// shows `screen` until that becomes null; `dismissed` asks the presenting model to remove it.
T.Popup {
    id: sheet

    property var screen: null
    // Keeps the content while the sheet slides out.
    property var shownScreen: null
    readonly property Item area: T.Overlay.overlay
    readonly property real areaWidth: area ? area.width : 0
    readonly property real areaHeight: area ? area.height : 0
    readonly property bool card: areaWidth >= Theme.regularWidth
    readonly property real restingY: card ? Math.round((areaHeight - height) / 2) : 0
    property real travelled: 1

    signal dismissed

    parent: area
    width: card ? Math.min(Theme.sheetWidth, areaWidth - 80) : areaWidth
    height: card ? Math.min(820, areaHeight - 80) : areaHeight
    x: Math.round((areaWidth - width) / 2)
    y: restingY + Math.round((1 - travelled) * (areaHeight - restingY))
    visible: screen !== null && screen !== undefined
    modal: true
    dim: true
    focus: true
    padding: 0
    closePolicy: T.Popup.NoAutoClose

    onScreenChanged: if (screen) shownScreen = screen
    onClosed: shownScreen = null

    T.Overlay.modal: Rectangle {
        color: Theme.dim
        Behavior on opacity { NumberAnimation { duration: Theme.moderate } }
    }

    enter: Transition {
        NumberAnimation { property: "travelled"; from: Theme.reducedMotion ? 1 : 0; to: 1; duration: 300; easing.type: Easing.OutCubic }
        NumberAnimation { property: "opacity"; from: Theme.reducedMotion ? 0 : 1; to: 1; duration: Theme.moderate }
    }
    exit: Transition {
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

    contentItem: FocusScope {
        focus: true
        Accessible.role: Accessible.Dialog
        Accessible.name: sheet.shownScreen?.title ?? sheet.shownScreen?.heading ?? sheet.shownScreen?.name ?? ""
        LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
        LayoutMirroring.childrenInherit: true
        Keys.onEscapePressed: sheet.dismissed()

        // Inset, so that the square page stays within the card's rounded corners.
        Loader {
            id: place
            anchors.fill: parent
            anchors.topMargin: sheet.card ? Theme.sheetCorner / 2 : 0
            anchors.bottomMargin: sheet.card ? Theme.sheetCorner / 2 : 0
            anchors.leftMargin: sheet.card ? 1 : 0
            anchors.rightMargin: sheet.card ? 1 : 0
            focus: true
            active: sheet.shownScreen !== null
            sourceComponent: ScreenView {
                focus: true
                screen: sheet.shownScreen // qmllint disable unqualified
            }
        }
        IconButton {
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: Theme.within
            visible: place.item?.closable ?? false
            text: qsTr("Close")
            symbol: "xmark"
            symbolSize: 20
            ink: Theme.secondaryText
            onClicked: sheet.dismissed()
        }
    }
}
