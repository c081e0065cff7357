import QtQuick
import Quillmar

// Text of a screen. It is plain text, whatever it holds.
Text {
    font: Theme.body
    color: Theme.text
    textFormat: Text.PlainText
    wrapMode: Text.Wrap
    lineHeight: Theme.lineHeight
    // The extra of the line height lies below the glyphs; half of it above keeps them in the middle.
    topPadding: Math.round(font.pixelSize * (lineHeight - 1) / 2)
    bottomPadding: 0
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text.length === 0
}
