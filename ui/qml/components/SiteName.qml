import QtQuick
import Quillmar

// The name of a site, whose end tells as much as its start: it wraps where it must, and only what no person could read
// anyway is left out.
OneLine {
    wrapMode: Text.Wrap
    maximumLineCount: 4
}
