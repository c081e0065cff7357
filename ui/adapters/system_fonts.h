#pragma once

namespace quillmar::ui {

// Lists the system's fonts for Qt, which would otherwise do so for the first text. Takes some milliseconds.
// May be called on any thread; one that uses a font meanwhile would list them as well.
void readSystemFonts();

}  // namespace quillmar::ui
