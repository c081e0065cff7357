import QtQuick
import Quillmar

// The shadow of a surface that is raised from the page.
SoftShadow {
    id: elevation

    property real drop: depth / 4
    property real strength: Theme.dark ? 0.5 : 0.14

    color: Theme.alpha(Theme.shadow, strength)
    corner: Theme.corner
    depth: 16
    transform: Translate { y: elevation.drop }
}
