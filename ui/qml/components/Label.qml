import QtQuick
import Quillmar

// A screen's text. It is always plain text, never markup.
Text {
    font: Theme.body
    color: Theme.text
    textFormat: Text.PlainText
    wrapMode: Text.Wrap
    lineHeight: Theme.lineHeight
    // Cancels the extra line height under the last line, which would move a centred text up.
    bottomPadding: Math.round(font.pixelSize * Theme.faceHeight * (1 - lineHeight))
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text.length === 0
}
