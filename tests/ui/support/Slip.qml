import QtQuick
import Quillmar

// A file with a mistake, which the checker must find.
Rectangle {
    border.width: Theme.quickly
}
