import QtQuick
import Quillmar

// Text of a screen. It is plain text, whatever it holds.
Text {
    font: Theme.body
    color: Theme.text
    textFormat: Text.PlainText
    wrapMode: Text.Wrap
    lineHeight: Theme.lineHeight
    // The extra of the last line's height would lie under the text and push it out of the middle.
    bottomPadding: Math.round(font.pixelSize * Theme.faceHeight * (1 - lineHeight))
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text.length === 0
}
