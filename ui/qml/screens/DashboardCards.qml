pragma ComponentBehavior: Bound
import QtQuick
import Quillmar

// The cards of a dashboard. An answer of the service may add, move and remove cards; the others are not redrawn.
Item {
    id: list

    required property var screen
    property string chosen
    readonly property var answered: screen.lastRefreshTime
    property bool complete: false

    implicitHeight: cards.implicitHeight
    onAnsweredChanged: if (complete) rearranging.restart()
    Component.onCompleted: complete = true

    // How cards change when an answer of the service arrives.
    component Replacement: NumberAnimation {
        duration: 200
        easing.type: Easing.InOutQuad
    }
    component Entrance: SequentialAnimation {
        id: entrance

        property bool staged: false
        property int wait: 0

        PauseAnimation { duration: entrance.staged ? entrance.wait : 0 }
        NumberAnimation {
            duration: entrance.staged ? 300 : 200
            easing.type: entrance.staged ? Easing.OutQuad : Easing.InOutQuad
        }
    }

    // An answer moves cards with an animation; a window that is being resized moves them without one.
    Timer {
        id: rearranging
        interval: 250
    }

    Column {
        id: cards
        width: parent.width
        spacing: Theme.gap
        opacity: list.screen.drawnCardOpacity
        Behavior on opacity { NumberAnimation { duration: Theme.moderate } }
        move: Transition {
            enabled: rearranging.running && !Theme.reducedMotion
            Replacement { property: "y" }
        }

        Repeater {
            model: list.screen.shownCards
            onItemRemoved: (index, item) => {
                if (!list.screen.shownCards.isSelecting()) {
                    leaving.createObject(list, { child: item.child, y: item.y, width: item.width })
                }
            }

            DashboardCard {
                id: card

                required property var modelData
                readonly property bool staged: modelData.entrance === "staged"
                readonly property int wait: Theme.reducedMotion ? 0 : modelData.appearanceDelay * 1000
                // The cards of another selection are there at once.
                property bool entered: list.screen.shownCards.isSelecting()

                Component.onCompleted: entered = true

                child: modelData
                chosen: list.chosen === modelData.child.id
                part: list.screen.filterText
                width: cards.width
                opacity: entered ? 1 : 0
                transform: Translate {
                    y: card.entered || !card.staged || Theme.reducedMotion ? 0 : 20
                    Behavior on y { Entrance { staged: card.staged; wait: card.wait } }
                }
                Behavior on opacity { Entrance { staged: card.staged; wait: card.wait } }
            }
        }
    }

    Component {
        id: leaving

        DashboardCard {
            id: gone
            enabled: false
            Accessible.ignored: true

            Replacement on opacity {
                to: 0
                onFinished: gone.destroy()
            }
        }
    }
}
