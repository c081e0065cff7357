import QtQuick

// A spring animation: undamped it would swing once in `response` seconds; with a `damping` below 1 it overshoots
// before it rests.
NumberAnimation {
    id: motion

    property real response: 0.5
    property real damping: 0.8
    readonly property real frequency: 2 * Math.PI / response
    readonly property real decay: damping * frequency
    readonly property real swing: frequency * Math.sqrt(1 - damping * damping)
    // The time until less than a thousandth of the distance is left.
    readonly property real seconds: Math.log(1000 * frequency / swing) / decay

    function place(time) {
        return 1 - Math.exp(-decay * time) * (Math.cos(swing * time) + decay / swing * Math.sin(swing * time))
    }
    function speed(time) {
        return Math.exp(-decay * time) * frequency * frequency / swing * Math.sin(swing * time)
    }
    // A piecewise curve with the spring's places and speeds. Qt has room for ten pieces, and writes out of bounds
    // with more.
    function curve() {
        const pieces = 8
        const step = seconds / pieces
        const points = []
        for (let i = 0; i < pieces; ++i) {
            const from = i * step
            const to = from + step
            const end = i + 1 < pieces ? place(to) : 1
            points.push((from + step / 3) / seconds, place(from) + speed(from) * step / 3,
                        (to - step / 3) / seconds, end - speed(to) * step / 3,
                        (i + 1) / pieces, end)
        }
        return points
    }

    duration: Math.round(1000 * seconds)
    easing.type: Easing.BezierSpline
    easing.bezierCurve: curve()
}
