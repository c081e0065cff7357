import QtQuick
import Quillmar

CameraPreviewFrame {
    radius: 20
}
