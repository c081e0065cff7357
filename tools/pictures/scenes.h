#pragma once

#include <functional>
#include <string>
#include <vector>

#include "testing/test_application.h"
#include "testing/ui/ui_stage.h"

namespace quillmar {

// One state of one screen: what the installation holds when it starts, and what then happens.
struct Shot {
  std::string name;
  StoredSettings stored;
  std::function<void(ui::UiStage&)> play = [](ui::UiStage& /*stage*/) {};
  double textScale = 1;
};

// The screens of a child's device and those before the choice of a role, and the screens of a parent's.
std::vector<Shot> childDeviceScenes();
std::vector<Shot> parentScenes();
// Every screen in each of its states.
std::vector<Shot> scenes();

}  // namespace quillmar
