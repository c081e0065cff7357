import QtQuick
import QtQuick.Layouts
import Quillmar

// A site of a child's activity or of the always-allowed list, with the action of its swipe.
SwipeRow {
    id: site

    property string title
    property string time
    property string badge
    property string badgeSymbol
    property color badgeTint: Theme.green
    property color badgeInk: Theme.positiveText
    property bool stripAtEnd: false
    // With large texts the badge and the time stand under the name, which would have no room beside them.
    readonly property bool stacked: Theme.textScale > 1.3

    name: title
    description: [badge, time].filter(text => text.length > 0).join(", ") // qmllint disable type
    actionTitle: row.stripTitle
    actionSymbol: row.stripIcon
    inset: Theme.gap + 22 + Theme.between
    behind: SwipeStrip {
        title: site.row.stripTitle
        symbol: site.row.stripIcon
        tint: Qt.darker(Theme.tint(site.row.stripColor), 1.15)
        atEnd: site.stripAtEnd
    }

    RowLayout {
        width: site.width
        height: Math.max(Theme.target + 8, implicitHeight + Theme.within)
        spacing: Theme.between

        Symbol {
            name: site.row.icon
            color: Theme.tint(site.row.iconColor)
            Layout.preferredWidth: 22
            Layout.preferredHeight: 22
            Layout.leftMargin: Theme.gap
        }
        ColumnLayout {
            spacing: 2
            Layout.fillWidth: true

            SiteName {
                line: site.name
                font: Theme.callout
                Layout.fillWidth: true
                Accessible.ignored: true

                Matches { part: site.part }
            }
            Label {
                visible: site.stacked && text.length > 0
                text: site.description
                font: Theme.caption
                color: Theme.cardSecondaryText
                lineHeight: 1
                Layout.fillWidth: true
                Accessible.ignored: true
            }
        }
        Badge {
            visible: site.badge.length > 0 && !site.stacked
            text: site.badge
            symbol: site.badgeSymbol
            tint: site.badgeTint
            ink: site.badgeInk
        }
        Item {
            implicitWidth: Math.max(site.buttonSpace, time.visible ? time.width + Theme.gap : Theme.within)
            implicitHeight: time.implicitHeight

            OneLine {
                id: time
                anchors.right: parent.right
                anchors.rightMargin: Theme.gap
                width: Math.min(implicitWidth, site.width * 0.35)
                visible: text.length > 0 && !site.stacked
                opacity: site.showsButton ? 0 : 1
                line: site.time
                font: Theme.caption
                color: Theme.cardSecondaryText
                Accessible.ignored: true
            }
        }
    }
}
