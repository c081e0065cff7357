#pragma once

namespace quillmar::ui {

// Makes windows and text boxes answer assistive technologies by ways of their own, where Qt's would tell too
// much:
// - of a window only what lies in front is heard: not the page under a sheet, nor the sheet under a question;
// - of a box that hides what is written in it only bullets are heard, one for each letter.
void installAccessibility();

}  // namespace quillmar::ui
