#include "ui/adapters/qt_window_style.h"

#include <utility>

#include "ui/adapters/desktop_settings.h"

namespace quillmar::ui {

QtWindowStyle::QtWindowStyle(const DesktopSettings& desktop) : desktop_(desktop) {
  connect(&desktop, &DesktopSettings::changed, this, &QtWindowStyle::changed);
}

void QtWindowStyle::setBarAppearance(const BarAppearance& appearance) {
  barAppearance_ = appearance;
  Q_EMIT changed();
}

void QtWindowStyle::setOverrideUserInterfaceStyle(UserInterfaceStyle style) {
  if (std::exchange(override_, style) != style) {
    Q_EMIT changed();
  }
}

bool QtWindowStyle::isDark() const {
  return override_ == UserInterfaceStyle::unspecified ? desktop_.isDark()
                                                      : override_ == UserInterfaceStyle::dark;
}

}  // namespace quillmar::ui
