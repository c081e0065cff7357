#pragma once

namespace quillmar::ui {

// Replaces Qt's accessible interfaces of windows and text boxes, which would expose too much:
// - a window exposes only what is topmost: not the page under a sheet, nor the sheet under an alert;
// - a password box exposes one bullet for each letter.
void installAccessibility();

}  // namespace quillmar::ui
