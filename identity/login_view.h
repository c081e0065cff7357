#pragma once

#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// Where a parent signs in.
class LoginView final : public ScreenModel {
 public:
  explicit LoginView(Environment& /*environment*/) : ScreenModel("LoginView") {}
};

}  // namespace quillmar
