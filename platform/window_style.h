#pragma once

#include <string>

#include "platform/port.h"

namespace quillmar {

enum class UserInterfaceStyle { unspecified = 0, light = 1, dark = 2 };

struct BarTitle {
  int size = 17;
  bool bold = false;  // else semibold
  friend bool operator==(const BarTitle&, const BarTitle&) = default;
};

// The look of navigation and tab bars: opaque, in the system's background colour also when content is
// scrolled under them, with titles in the label colour.
struct BarAppearance {
  BarTitle title;
  BarTitle largeTitle;
  struct Tint {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    friend bool operator==(const Tint&, const Tint&) = default;
  } tint;
  friend bool operator==(const BarAppearance&, const BarAppearance&) = default;
};

// The look of all windows. Main thread only.
class WindowStyle : public Port {
 public:
  // Called once, before any screen is drawn.
  virtual void setBarAppearance(const BarAppearance& appearance) = 0;
  // Overrides the look of all windows, or returns them to the desktop's setting.
  virtual void setOverrideUserInterfaceStyle(UserInterfaceStyle style) = 0;
};

}  // namespace quillmar
