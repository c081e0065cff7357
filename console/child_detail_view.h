#pragma once

#include <functional>

#include "client/records/child.h"
#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// A child: its devices, its filtering policy and what its devices asked for.
class ChildDetailView final : public ScreenModel {
 public:
  explicit ChildDetailView(Environment& /*environment*/, ChildProfileWithDevices /*child*/,
                           std::function<void()> /*onUpdate*/)
      : ScreenModel("ChildDetailView") {}
};

}  // namespace quillmar
