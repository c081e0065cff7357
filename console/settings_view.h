#pragma once

#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// Account, appearance, version, and the end of the account.
class SettingsView final : public ScreenModel {
 public:
  explicit SettingsView(Environment& /*environment*/) : ScreenModel("SettingsView") {}
};

}  // namespace quillmar
