#pragma once

namespace quillmar {
class StateFile;
}

namespace quillmar::ui {

// Whether the person wants notices outside the window; kept among the window's rows, because it is a wish of
// this desktop and not part of the installation. On at first.
bool wantsNotices(const StateFile& file);
void keepWishForNotices(const StateFile& file, bool wanted);

}  // namespace quillmar::ui
