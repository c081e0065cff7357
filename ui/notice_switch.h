#pragma once

class QString;

namespace quillmar::ui {

// Whether the person wants notices outside the window; kept in the window's file, because it is a wish of
// this desktop and not part of the installation. On at first.
bool wantsNotices(const QString& file);
void keepWishForNotices(const QString& file, bool wanted);

}  // namespace quillmar::ui
