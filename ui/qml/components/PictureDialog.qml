import QtQuick
import QtQuick.Dialogs

FileDialog {
    nameFilters: [qsTr("Pictures (*.png *.jpg *.jpeg *.webp *.bmp *.gif)"), qsTr("All files (*)")]
}
