#pragma once

#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// The family: its members, their rights, and the invitations still open.
class FamilyMembersView final : public ScreenModel {
 public:
  explicit FamilyMembersView(Environment& /*environment*/) : ScreenModel("FamilyMembersView") {}
};

}  // namespace quillmar
