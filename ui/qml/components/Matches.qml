import QtQuick
import Quillmar

// Marks the places of `part` in the text of the label that it is put into.
MatchMarks {
    readonly property Text label: parent as Text

    z: -1
    anchors.fill: parent
    text: label.text
    font: label.font
    elide: label.elide
    lines: label.wrapMode === Text.NoWrap ? 1 : label.maximumLineCount
    lineHeight: label.lineHeight
    mirrored: label.effectiveHorizontalAlignment === Text.AlignRight
    color: Theme.alpha(Theme.orange, 0.35)
}
