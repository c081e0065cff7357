#pragma once

#include <string>

#include "platform/port.h"

namespace quillmar {

enum class UserInterfaceStyle { unspecified = 0, light = 1, dark = 2 };

struct BarTitle {
  int size = 17;
  bool bold = false;  // otherwise semibold
  friend bool operator==(const BarTitle&, const BarTitle&) = default;
};

// The fixed look of navigation and tab bars: opaque in the system's background colour, the same at the edge
// of scrolled content, titles in the label colour.
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

// The look of all windows of the program. Main thread only.
class WindowStyle : public Port {
 public:
  // Set up once, before any screen is drawn.
  virtual void setBarAppearance(const BarAppearance& appearance) = 0;
  // Forces a look on every window, or gives them back to the desktop's setting.
  virtual void setOverrideUserInterfaceStyle(UserInterfaceStyle style) = 0;
};

}  // namespace quillmar
