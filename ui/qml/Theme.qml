pragma Singleton
import QtQuick
import Quillmar

// Every colour, size and time that a screen may use.
QtObject {
    readonly property bool dark: Look.dark
    readonly property bool reducedMotion: Look.reducedMotion

    // Colours
    readonly property color blue: Look.colors.brandBlue
    readonly property color blueDark: Look.colors.brandBlueDark
    readonly property color teal: Look.colors.brandTeal
    readonly property color gold: Look.colors.brandGold
    readonly property color green: Look.colors.brandGreen
    readonly property color orange: Look.colors.brandOrange
    readonly property color red: Look.colors.brandRed
    readonly property color online: Look.colors.statusOnline
    readonly property color offline: Look.colors.statusOffline

    readonly property color page: dark ? "#1C1C1E" : "#FFFFFF"
    readonly property color card: dark ? "#2C2C2E" : "#F2F2F7"
    readonly property color cardPressed: dark ? "#3A3A3C" : "#E5E5EA"
    readonly property color raised: dark ? "#2C2C2E" : "#FFFFFF"
    readonly property color text: dark ? "#FFFFFF" : "#1C1C1E"
    readonly property color secondaryText: dark ? "#8E8E93" : "#6C6C70"
    // The same on a card, where the dark one would fall short of 4.5 to 1.
    readonly property color cardSecondaryText: dark ? "#A1A1A6" : "#6C6C70"
    readonly property color separator: alpha(text, 0.12)
    // Of what is written in, switched or marked: to be seen on the page and on a card.
    readonly property color edge: dark ? "#7F7F84" : "#86868B"
    // What a button out of use says ("Creating...") is still to be read.
    readonly property color outOfUse: dark ? "#48484A" : "#D1D1D6"
    readonly property color outOfUseText: dark ? "#B9B9BE" : "#58585D"
    readonly property color dim: Qt.rgba(0, 0, 0, dark ? 0.55 : 0.4)
    readonly property color shadow: "#000000"
    readonly property color onBrand: "#FFFFFF"

    // The brand's colours where they are letters: deep enough, or light enough, to be read.
    readonly property color linkText: dark ? "#4DA3FF" : blueDark
    readonly property color positiveText: dark ? green : "#1B7A34"
    readonly property color warningText: dark ? "#FFA826" : "#9A4B00"
    readonly property color dangerText: dark ? "#FF7A71" : "#C9190B"

    // Colours that screens name, as shapes and as letters.
    readonly property var inks: ({ brandBlue: linkText, brandGreen: positiveText, brandOrange: warningText,
                                   brandRed: dangerText, secondaryText: cardSecondaryText })
    function tint(name) { return Look.colors[name] ?? text }
    function ink(name) { return inks[name] ?? text }

    function alpha(color, opacity) { return Qt.rgba(color.r, color.g, color.b, opacity) }

    // Type
    readonly property real textScale: Look.textScale
    readonly property real lineHeight: 1.3
    // Of one line of the interface's face, in its size.
    readonly property real faceHeight: 1.21
    readonly property font largeTitle: display(34, Font.Bold, -0.4)
    readonly property font title: display(22, Font.Bold, -0.1)
    readonly property font subtitle: display(19, Font.DemiBold, 0)
    readonly property font headline: face(17, Font.DemiBold)
    readonly property font body: face(17, Font.Normal)
    readonly property font callout: face(15, Font.Normal)
    readonly property font footnote: face(13, Font.Normal)
    readonly property font footnoteStrong: face(13, Font.DemiBold)
    readonly property font caption: face(12, Font.Medium)
    readonly property font code: Look.codeFont(scaled(13), Font.Normal, 0)
    readonly property font largeCode: Look.codeFont(scaled(28), Font.DemiBold, 4)

    function scaled(size) { return Math.round(size * textScale) }
    function face(size, weight) { return Look.textFont(scaled(size), weight) }
    function display(size, weight, spacing) { return Look.displayFont(scaled(size), weight, spacing) }

    // Space
    readonly property int unit: 4
    readonly property int within: 8
    readonly property int between: 12
    readonly property int gap: 16
    readonly property int section: 24
    readonly property int regularWidth: 600
    readonly property int contentWidth: 600
    readonly property int wideContentWidth: 700
    readonly property int sheetWidth: 640
    readonly property int target: 44
    readonly property int primaryTarget: 50
    readonly property int corner: 12
    readonly property int sheetCorner: 14
    readonly property int barHeight: 52
    function margin(width) { return width < regularWidth ? 16 : 24 }

    // Motion; with reduced motion things fade, but do not travel, grow or pulse.
    readonly property int quick: 150
    readonly property int moderate: 250
    readonly property int rerouting: 300
    readonly property int travel: reducedMotion ? 0 : moderate
}
