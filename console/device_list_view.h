#pragma once

#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// The dashboard of a signed-in parent.
class DeviceListView final : public ScreenModel {
 public:
  explicit DeviceListView(Environment& /*environment*/) : ScreenModel("DeviceListView") {}
};

}  // namespace quillmar
