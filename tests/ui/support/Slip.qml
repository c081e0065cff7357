import QtQuick
import Quillmar

// What the checker is tried on.
Rectangle {
    border.width: Theme.quickly
}
