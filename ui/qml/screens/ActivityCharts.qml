pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Quillmar

// The charts of a child's activity, and the rows behind the chosen bar. In two columns the sites with most requests
// stand beside the charts, otherwise under them.
ColumnLayout {
    id: charts

    required property var screen
    required property Page container

    // The field is far down the page.
    readonly property int asks: screen.filterAsks
    onAsksChanged: Qt.callLater(scrollToRows) // qmllint disable type

    readonly property bool twoColumns: width >= 640 * Math.max(1, Theme.textScale)
    readonly property real columnWidth: twoColumns ? (width - Theme.section) / 2 : width
    // Hidden if large text leaves no room.
    readonly property bool showsCounts: columnWidth > 300 * Theme.textScale

    spacing: Theme.between

    // Brings the rows of the bar that was just chosen into view.
    function leadToRows(byKey) {
        if (byKey) {
            wholeDay.forceActiveFocus(Qt.TabFocusReason)
        }
        Qt.callLater(scrollToRows) // qmllint disable type
    }
    function scrollToRows() {
        const way = rowsTitle.mapToItem(container, 0, 0).y - (container.bar ? container.bar.height : 0) - Theme.gap
        journey.way = way
        journey.gone = 0
        journey.restart()
    }
    NumberAnimation {
        id: journey

        property real way: 0
        property real gone: 0
        property real travelled: 0

        target: journey
        property: "travelled"
        from: 0
        to: 1
        duration: Theme.travel
        easing.type: Easing.InOutQuad
        onTravelledChanged: {
            charts.container.scrollBy(way * travelled - gone)
            gone = way * travelled
        }
    }

    ChipRow {
        visible: charts.screen.hasDeviceChoices
        options: charts.screen.deviceChoices
        onChosenAt: index => charts.screen.chooseDevice.trigger(index)
        Layout.fillWidth: true
    }
    Item {
        id: parts

        readonly property real below: time.height + Theme.between

        implicitHeight: charts.twoColumns ? Math.max(rows.y + rows.height, sites.height) : rows.y + rows.height
        Layout.fillWidth: true

        ColumnLayout {
            id: time
            anchors.left: parent.left
            width: charts.columnWidth
            spacing: Theme.between

            ChartCard {
                title: charts.screen.daysTitle
                name: charts.screen.daysTitle
                number: charts.screen.daysNumber
                bars: charts.screen.dayBars
                topNumber: charts.screen.daysTop
                middleNumber: charts.screen.daysMiddle
                plotHeight: 96
                fadesOthers: true
                allowedLegend: charts.screen.allowedLegend
                blockedLegend: charts.screen.blockedLegend
            }
            ChartCard {
                title: charts.screen.hoursTitle
                name: charts.screen.hoursTitle
                number: charts.screen.hoursNumber
                bars: charts.screen.hourBars
                topNumber: charts.screen.hoursTop
                middleNumber: charts.screen.hoursMiddle
                fadesOthers: charts.screen.hasChosenHour
                labelSpacing: 6
                allowedLegend: charts.screen.allowedLegend
                blockedLegend: charts.screen.blockedLegend
                onChosen: byKey => charts.leadToRows(byKey)
            }
        }
        ColumnLayout {
            id: sites
            anchors.right: parent.right
            y: charts.twoColumns ? -Theme.between : parts.below
            width: charts.columnWidth
            spacing: Theme.between

            SiteBars {
                title: charts.screen.visitedTitle
                emptyText: charts.screen.noVisitedText
                bars: charts.screen.visitedBars
                onChosen: byKey => charts.leadToRows(byKey)
            }
            SiteBars {
                title: charts.screen.blockedTitle
                emptyText: charts.screen.noBlockedText
                bars: charts.screen.blockedBars
                onChosen: byKey => charts.leadToRows(byKey)
            }
            SiteBars {
                title: charts.screen.newSitesTitle
                caption: charts.screen.newSitesCaption
                emptyText: charts.screen.noNewSitesText
                bars: charts.screen.newSiteBars
                onChosen: byKey => charts.leadToRows(byKey)
            }
            SecondaryButton {
                id: allNewSites
                visible: text.length > 0
                text: charts.screen.allNewSitesTitle ?? ""
                onClicked: {
                    charts.screen.showNewSites.trigger()
                    charts.leadToRows(visualFocus)
                }
                Layout.fillWidth: true
            }
        }
        ColumnLayout {
            id: rows
            anchors.left: parent.left
            y: charts.twoColumns ? parts.below : sites.y + sites.height + Theme.between
            width: charts.columnWidth
            // Rows that are chosen or looked for are led to, and stay where they are while others go.
            readonly property bool chosen: charts.screen.isFilterOpen || wholeDay.visible
            height: Math.max(implicitHeight, chosen ? charts.container.viewHeight : 0)
            spacing: Theme.between

            SectionTitle {
                id: rowsTitle
                text: charts.screen.rowsTitle
                count: charts.screen.rowsCount
                caption: charts.screen.rowsCaption
            }
            SecondaryButton {
                id: wholeDay
                visible: effect.enabled
                text: charts.screen.wholeDayTitle
                effect: charts.screen.showWholeDay
                Layout.fillWidth: true
            }
            FilterPlace { screen: charts.screen }
            RowGround {
                id: list
                model: charts.screen.shownSites
                placeholder: noSites

                SiteRow {
                    required property var modelData
                    required property int index
                    readonly property bool allowable: modelData.allow !== undefined

                    row: modelData
                    part: charts.screen.filterText // qmllint disable unqualified
                    first: index === 0
                    title: charts.screen.showsNames ? modelData.log.domain : modelData.site
                    time: modelData.timeText
                    badge: modelData.badge ?? (charts.showsCounts ? modelData.countText : "")
                    badgeSymbol: modelData.badge ? modelData.badgeIcon : ""
                    badgeTint: modelData.badge ? Theme.tint(modelData.badgeColor) : Theme.offline
                    badgeInk: modelData.badge ? Theme.ink(modelData.badgeColor) : Theme.text
                    effect: allowable ? modelData.allow : modelData.block
                    destructive: !allowable
                }
            }
            QuietNote {
                id: noSites
                visible: list.count === 0
                text: charts.screen.noRowsText
            }
            SecondaryButton {
                visible: charts.screen.hasMoreRows
                text: charts.screen.moreRowsTitle
                effect: charts.screen.showMoreRows
                Layout.fillWidth: true
            }
            Item {
                visible: rows.chosen
                Layout.fillHeight: true
            }
        }
    }
}
