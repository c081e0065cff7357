#pragma once

#include <string>

#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// Where a second parent joins a family by an invite code.
class JoinFamilyView final : public ScreenModel {
 public:
  explicit JoinFamilyView(Environment& /*environment*/, std::string /*initialInviteCode*/ = {})
      : ScreenModel("JoinFamilyView") {}
};

}  // namespace quillmar
