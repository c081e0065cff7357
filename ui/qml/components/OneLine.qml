import QtQuick
import Quillmar

// A text on one line, elided if there is no room. Line breaks in `line` become spaces.
Label {
    property string line

    text: line.replace(/[\n-\r\x85\u2028\u2029]+/g, " ")
    // As the layout, whatever the direction of the text.
    horizontalAlignment: Text.AlignLeft
    lineHeight: 1
    wrapMode: Text.NoWrap
    elide: Text.ElideRight
    maximumLineCount: 1
}
