import QtQuick
import QtQuick.Layouts
import Quillmar

// A page: an optional bar and a centred column of content of limited width. The content scrolls if it is too long,
// and is centred vertically if it is short and the page is `centered`.
FocusScope {
    id: page

    default property alias content: column.data
    property Item bar: null
    property real maximumWidth: Theme.contentWidth
    property bool centered: false
    property real topSpace: Theme.section
    property real bottomSpace: 40
    property bool tinted: false
    property alias spacing: column.spacing
    property real leastHeight: 0
    implicitHeight: Math.max(leastHeight, barPlace.height + column.implicitHeight + topSpace + bottomSpace)
    readonly property real margin: Theme.margin(width)
    readonly property bool regular: width >= Theme.regularWidth
    readonly property real contentWidth: column.width
    readonly property real viewHeight: flickable.height
    // With what is scrolled out of view.
    readonly property real wholeHeight: barPlace.height + column.height + topSpace + bottomSpace
    // The anchor keeps its place in the window when content above it changes: the focused text box, otherwise the
    // list that the person uses.
    property Item list: null
    // True while the program moves the focus, for example because rows change. The page does not scroll for
    // that.
    property bool handingOver: false
    readonly property Item textBox: focused?.keepsPlace !== undefined && isWithin(focused) ? focused : null
    readonly property Item anchor: textBox?.keepsPlace ? textBox : list
    property real anchorPlace: NaN
    // The whole content was laid out anew since the last frame.
    property bool rearranged: false
    // The part of a correction that scrolling can't do: the content's offset beyond the top or the end.
    property real shift: 0

    Rectangle {
        anchors.fill: parent
        color: Theme.page
    }
    Rectangle {
        width: parent.width
        height: Math.min(parent.height, 460)
        visible: page.tinted
        gradient: Gradient {
            GradientStop { position: 0; color: Theme.alpha(Theme.blue, Theme.dark ? 0.16 : 0.10) }
            GradientStop { position: 1; color: Theme.alpha(Theme.blue, 0) }
        }
    }

    Item {
        id: barPlace
        width: parent.width
        height: page.bar ? page.bar.implicitHeight : 0
        z: 1
        data: page.bar ? [page.bar] : []
        Binding {
            target: page.bar
            property: "width"
            value: barPlace.width
            when: page.bar !== null
        }
    }

    Flickable {
        id: flickable
        y: barPlace.height
        width: parent.width
        height: parent.height - y
        contentWidth: width
        contentHeight: Math.max(height, column.height + page.topSpace + page.bottomSpace)
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        ColumnLayout {
            id: column
            x: (flickable.width - width) / 2
            y: page.shift
               + (page.centered ? Math.max(page.topSpace, (flickable.contentHeight - height) / 2) : page.topSpace)
            width: Math.min(flickable.width - 2 * page.margin, Look.widthLimit(page.width, page.maximumWidth))
            spacing: Theme.between
        }
    }

    // Loaded when the content is first too long. A page without a size is not laid out yet.
    Loader {
        readonly property bool needed: page.width > 0 && page.height > 0 && page.wholeHeight > page.height
        anchors.right: parent.right
        onNeededChanged: if (needed && status === Loader.Null) setSource("ScrollMarker.qml", { flickable: flickable })
    }

    // The focused control is scrolled into view.
    readonly property Item focused: Window.activeFocusItem
    onFocusedChanged: {
        if (focused && isWithin(focused) && !handingOver) {
            showFocused()
        }
    }
    function showFocused() {
        const top = focused.mapToItem(column, 0, 0).y + column.y
        const room = 24
        if (top - room < flickable.contentY) {
            flickable.contentY = Math.max(0, top - room)
        } else if (top + focused.height + room > flickable.contentY + flickable.height) {
            flickable.contentY = Math.min(flickable.contentHeight - flickable.height,
                                          top + focused.height + room - flickable.height)
        }
    }
    function isWithin(item) {
        for (let above = item; above; above = above.parent) {
            if (above === column) {
                return true
            }
        }
        return false
    }

    function hold(item, held) {
        if (held) {
            list = item
        } else if (list === item) {
            list = null
        }
    }
    // The place in the content without animations, such as that of a pressed control.
    function placeOf(item) {
        let y = -shift
        for (let above = item; above && above !== column.parent; above = above.parent) {
            y += above.y
        }
        return y
    }
    function keepStill() {
        if (rearranged && textBox) {
            showFocused()
        }
        if (!anchor) {
            rearranged = false
            return
        }
        const place = placeOf(anchor)
        const way = isNaN(anchorPlace) || rearranged ? 0 : place - anchorPlace
        rearranged = false
        anchorPlace = place
        if (way !== 0) {
            const wanted = flickable.contentY - shift + way
            flickable.contentY = Math.max(0, Math.min(flickable.contentHeight - flickable.height, wanted))
            shift = flickable.contentY - wanted
        }
    }
    onAnchorChanged: {
        // What was shown only now is laid out in the next frame.
        anchorPlace = NaN
        if (anchor) {
            homing.stop()
        } else if (shift !== 0) {
            homing.restart()
        }
    }
    // In a window of another size every place is different.
    function forgetPlace() {
        rearranged = true
        shift = 0
    }
    onWidthChanged: forgetPlace()
    onHeightChanged: forgetPlace()
    Connections {
        target: page.anchor || (page.rearranged && page.textBox) ? page.Window.window : null
        function onAfterAnimating() { page.keepStill() }
    }
    SequentialAnimation {
        id: homing
        // The press that took the focus away must still hit what was under the pointer.
        PauseAnimation { duration: 300 }
        NumberAnimation {
            target: page
            property: "shift"
            to: 0
            duration: Theme.travel
            easing.type: Easing.InOutQuad
        }
    }

    function scrollBy(distance) {
        flickable.contentY = Math.max(0, Math.min(flickable.contentHeight - flickable.height,
                                                  flickable.contentY + distance))
    }
    Keys.onPressed: event => {
        const page = flickable.height * 0.9
        const distances = { [Qt.Key_Down]: 60, [Qt.Key_Up]: -60, [Qt.Key_PageDown]: page, [Qt.Key_PageUp]: -page,
                            [Qt.Key_End]: flickable.contentHeight, [Qt.Key_Home]: -flickable.contentHeight }
        if (event.key in distances) {
            scrollBy(distances[event.key])
            event.accepted = true
        }
    }
}
