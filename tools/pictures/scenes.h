#pragma once

#include <functional>
#include <string>
#include <vector>

#include "testing/test_application.h"
#include "testing/ui/ui_stage.h"

namespace quillmar {

// One state of one screen: the stored settings at the start, and the steps that lead to the state.
struct Shot {
  std::string name;
  StoredSettings stored;
  std::function<void(ui::UiStage&)> play = [](ui::UiStage& /*stage*/) {};
  double textScale = 1;
};

// The child's scenes include the screens before a role is chosen.
std::vector<Shot> childDeviceScenes();
std::vector<Shot> parentScenes();
// Every screen in each of its states.
std::vector<Shot> scenes();

}  // namespace quillmar
