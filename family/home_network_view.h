#pragma once

#include "presentation/screen_model.h"

namespace quillmar {

class Environment;

// Filtering for what cannot run the agent, by the public address of the home.
class HomeNetworkView final : public ScreenModel {
 public:
  explicit HomeNetworkView(Environment& /*environment*/) : ScreenModel("HomeNetworkView") {}
};

}  // namespace quillmar
