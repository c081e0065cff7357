#pragma once

#include <functional>
#include <optional>
#include <string>

#include "client/records/child.h"
#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// Creates a child profile.
class AddChildView final : public ScreenModel {
 public:
  explicit AddChildView(Environment& /*environment*/, std::function<void()> /*onChildAdded*/ = {})
      : ScreenModel("AddChildView") {}
};

}  // namespace quillmar
