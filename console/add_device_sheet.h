#pragma once

#include <functional>
#include <optional>
#include <string>

#include "client/records/child.h"
#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// The ways to add a device to a child.
class AddDeviceSheet final : public ScreenModel {
 public:
  explicit AddDeviceSheet(Environment& /*environment*/, ChildProfileWithDevices /*child*/,
                          std::function<void()> /*onComplete*/)
      : ScreenModel("AddDeviceSheet") {}
};

}  // namespace quillmar
