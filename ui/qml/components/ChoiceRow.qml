import QtQuick
import Quillmar

// One option of a GroupedSection in which exactly one is chosen and marked.
ActionRow {
    id: row

    property bool chosen: false
    readonly property bool isChoice: true

    ink: Theme.text
    mark: chosen ? "checkmark" : ""
    Accessible.role: Accessible.RadioButton
    Accessible.checkable: true
    Accessible.checked: chosen
    Keys.forwardTo: ChoiceKeys { choice: row }
}
