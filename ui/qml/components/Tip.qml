import QtQuick
import Quillmar

// What a control does, and its key, beside the control and within the window. It takes no events.
Rectangle {
    id: tip

    // The control may go while this is being removed.
    readonly property Item control: Tips.control
    readonly property string key: control?.effect?.key ?? ""
    readonly property Item area: Window.contentItem
    readonly property point place: control ? control.mapToItem(area, 0, 0) : Qt.point(0, 0)
    readonly property real controlWidth: control ? control.width : 0
    readonly property real controlHeight: control ? control.height : 0
    readonly property bool above: area && place.y + controlHeight + 6 + height > area.height

    x: area ? Math.round(Math.max(4, Math.min(area.width - width - 4, place.x + (controlWidth - width) / 2))) : 0
    y: Math.round(above ? place.y - height - 6 : place.y + controlHeight + 6)
    width: area ? Math.min(words.implicitWidth, area.width - 8) : 0
    height: words.implicitHeight
    radius: Theme.within
    color: Theme.raised
    border.width: 1
    border.color: Theme.separator
    enabled: false

    Label {
        id: words
        width: parent.width
        text: (tip.control?.tip ?? "") + (tip.key.length > 0 ? " (" + tip.key + ")" : "")
        font: Theme.caption
        lineHeight: 1
        padding: Theme.within
        bottomPadding: Theme.within
        elide: Text.ElideRight
        wrapMode: Text.NoWrap
        Accessible.ignored: true
    }
}
