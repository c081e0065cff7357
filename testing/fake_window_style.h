#pragma once

#include <vector>

#include "platform/window_style.h"

namespace quillmar {

class FakeWindowStyle final : public WindowStyle {
 public:
  // Every call, in order.
  std::vector<BarAppearance> barAppearances;
  std::vector<UserInterfaceStyle> styles;

  void setBarAppearance(const BarAppearance& appearance) override { barAppearances.push_back(appearance); }
  void setOverrideUserInterfaceStyle(UserInterfaceStyle style) override { styles.push_back(style); }
};

}  // namespace quillmar
