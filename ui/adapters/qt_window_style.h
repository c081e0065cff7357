#pragma once

#include <QObject>

#ifndef Q_MOC_RUN
#include "platform/window_style.h"
#endif

namespace quillmar::ui {

class DesktopSettings;

// The look of all windows: the forced one, otherwise the desktop's. Changes apply at once.
class QtWindowStyle final : public QObject, public WindowStyle {
  Q_OBJECT

 public:
  explicit QtWindowStyle(const DesktopSettings& desktop);

  void setBarAppearance(const BarAppearance& appearance) override;
  void setOverrideUserInterfaceStyle(UserInterfaceStyle style) override;

  bool isDark() const;
  const BarAppearance& barAppearance() const { return barAppearance_; }
  const DesktopSettings& desktop() const { return desktop_; }

 Q_SIGNALS:
  void changed();

 private:
  const DesktopSettings& desktop_;
  BarAppearance barAppearance_;
  UserInterfaceStyle override_ = UserInterfaceStyle::unspecified;
};

}  // namespace quillmar::ui
