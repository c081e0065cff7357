#pragma once

#include <functional>
#include <optional>
#include <string>

#include "client/records/child.h"
#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// Takes a new name for a child.
class EditChildNameView final : public ScreenModel {
 public:
  explicit EditChildNameView(Environment& /*environment*/, std::string /*currentName*/,
                             std::function<void(std::string)> /*onSave*/)
      : ScreenModel("EditChildNameView") {}
};

}  // namespace quillmar
