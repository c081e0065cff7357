pragma Singleton
import QtQuick
import Quillmar

// Every colour, size and duration that a screen may use, taken from the presentation.
QtObject {
    readonly property bool dark: Look.dark
    readonly property bool reducedMotion: Look.reducedMotion

    // The same in both looks
    readonly property var semantic: Look.semanticColors
    readonly property color blue: semantic.brandBlue
    readonly property color blueDark: semantic.brandBlueDark
    readonly property color teal: semantic.brandTeal
    readonly property color tealDark: semantic.brandTealDark
    readonly property color green: semantic.brandGreen
    readonly property color orange: semantic.brandOrange
    readonly property color red: semantic.brandRed
    readonly property color online: semantic.statusOnline
    readonly property color offline: semantic.statusOffline
    readonly property color onBrand: semantic.onBrand
    readonly property color shadow: semantic.shadow
    readonly property color cameraGround: semantic.cameraGround
    readonly property color qrPlate: semantic.qrPlate
    readonly property color qrPlateMark: semantic.qrPlateMark

    // Of the look in force
    readonly property var scheme: Look.schemeColors
    readonly property color page: scheme.page
    readonly property color card: scheme.card
    readonly property color cardPressed: scheme.cardPressed
    readonly property color raised: scheme.raised
    readonly property color text: scheme.text
    readonly property color secondaryText: scheme.secondaryText
    readonly property color cardSecondaryText: scheme.cardSecondaryText
    readonly property color separator: scheme.separator
    readonly property color edge: scheme.edge
    readonly property color outOfUse: scheme.outOfUse
    readonly property color outOfUseText: scheme.outOfUseText
    readonly property color chosenTab: scheme.chosenTab
    readonly property color dim: scheme.dim

    // The brand's colours for text
    readonly property color linkText: scheme.linkText
    readonly property color positiveText: scheme.positiveText
    readonly property color warningText: scheme.warningText
    readonly property color dangerText: scheme.dangerText

    // Colours that screens give by name: `tint` is for shapes, `ink` for text.
    readonly property var inks: ({ brandBlue: linkText, brandGreen: positiveText, brandOrange: warningText,
                                   brandRed: dangerText, secondaryText: cardSecondaryText })
    function tint(name) { return semantic[name] ?? text }
    function ink(name) { return inks[name] ?? text }

    function alpha(color, opacity) { return Qt.rgba(color.r, color.g, color.b, opacity) }

    readonly property var measures: Look.measures

    // Type
    readonly property real textScale: Look.textScale
    readonly property real lineHeight: measures.lineHeight
    // The line height of the interface font, relative to its size
    readonly property real faceHeight: measures.faceHeight
    readonly property font largeTitle: display(measures.largeTitleSize, Font.Bold, -0.4)
    readonly property font title: display(measures.titleSize, Font.Bold, -0.1)
    readonly property font subtitle: display(measures.subtitleSize, Font.DemiBold, 0)
    readonly property font headline: face(measures.headlineSize, Font.DemiBold)
    readonly property font body: face(measures.bodySize, Font.Normal)
    readonly property font callout: face(measures.calloutSize, Font.Normal)
    readonly property font footnote: face(measures.footnoteSize, Font.Normal)
    readonly property font footnoteStrong: face(measures.footnoteSize, Font.DemiBold)
    readonly property font caption: face(measures.captionSize, Font.Medium)
    readonly property font code: Look.codeFont(scaled(measures.codeSize), Font.Normal, 0)
    readonly property font largeCode: Look.codeFont(scaled(measures.largeCodeSize), Font.DemiBold, 4)

    function scaled(size) { return Math.round(size * textScale) }
    function face(size, weight) { return Look.textFont(scaled(size), weight) }
    function display(size, weight, spacing) { return Look.displayFont(scaled(size), weight, spacing) }

    // Space
    readonly property int unit: measures.unit
    readonly property int within: measures.within
    readonly property int between: measures.between
    readonly property int gap: measures.gap
    readonly property int section: measures.section
    readonly property int regularWidth: measures.regularWidth
    readonly property int contentWidth: measures.contentWidth
    readonly property int sheetWidth: measures.sheetWidth
    readonly property int wideSheetWidth: measures.wideSheetWidth
    readonly property int deskWidth: measures.deskWidth
    readonly property int twoColumnWidth: measures.twoColumnWidth
    readonly property int target: measures.target
    readonly property int primaryTarget: measures.primaryTarget
    readonly property int corner: measures.corner
    readonly property int sheetCorner: measures.sheetCorner
    readonly property int barHeight: measures.barHeight
    readonly property real haloOpacity: measures.haloOpacity
    // The width of the dashboard in a window with a page beside it
    function dashboardWidth(width) {
        return Math.round(Math.max(measures.dashboardMinimum,
                                   Math.min(measures.dashboardShare * width, measures.dashboardMaximum)))
    }
    function margin(width) { return width < regularWidth ? measures.margin : measures.regularMargin }

    // Motion. With reduced motion things fade, but do not move, grow or pulse.
    readonly property int quick: measures.quick
    readonly property int moderate: measures.moderate
    readonly property int rerouting: measures.rerouting
    readonly property int travel: reducedMotion ? 0 : moderate
}
