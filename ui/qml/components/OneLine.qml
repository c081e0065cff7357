import QtQuick
import Quillmar

// A text of one line, which shows as much of `line` as there is room for. Where that breaks, a blank stands.
Label {
    property string line

    text: line.replace(/[\n-\r\x85\u2028\u2029]+/g, " ")
    lineHeight: 1
    wrapMode: Text.NoWrap
    elide: Text.ElideRight
    maximumLineCount: 1
}
