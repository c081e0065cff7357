#pragma once

#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// Where a parent makes an account.
class RegisterView final : public ScreenModel {
 public:
  explicit RegisterView(Environment& /*environment*/) : ScreenModel("RegisterView") {}
};

}  // namespace quillmar
