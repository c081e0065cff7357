#include "app/session/appearance_manager.h"

#include <string>

#include "platform/settings.h"

namespace quillmar {
namespace {

std::optional<ColorScheme> schemeOf(AppearanceMode mode) {
  switch (mode) {
    case AppearanceMode::system:
      return std::nullopt;
    case AppearanceMode::light:
      return ColorScheme::light;
    case AppearanceMode::dark:
      return ColorScheme::dark;
  }
  return std::nullopt;
}

}  // namespace

AppearanceManager::AppearanceManager(SettingsStore& settings, WindowStyle& windowStyle)
    : ObservableObject("AppearanceManager"), settings_(settings), windowStyle_(windowStyle) {
  const auto stored = settings_.read(settings::appearanceMode);
  currentMode = stored ? fromRawValue<AppearanceMode>(*stored).value_or(AppearanceMode::system)
                       : AppearanceMode::system;
  applyMode();
  // Observes only after the restore, so that restoring does not write.
  modeReaction_ = observe([this](const Member& member) {
    if (&member == &currentMode) {
      saveMode();
      applyMode();
    }
  });
}

void AppearanceManager::saveMode() {
  settings_.write(settings::appearanceMode, std::string(rawValue(currentMode())));
}

void AppearanceManager::applyMode() {
  colorScheme = schemeOf(currentMode());
  windowStyle_.setOverrideUserInterfaceStyle(static_cast<UserInterfaceStyle>(currentMode()));
}

void AppearanceManager::cycleMode() {
  constexpr int modes = 3;
  currentMode = static_cast<AppearanceMode>((static_cast<int>(currentMode()) + 1) % modes);
}

BarAppearance barAppearance() {
  return {.title = {.size = 17, .bold = false},
          .largeTitle = {.size = 34, .bold = true},
          .tint = {.red = 0.0, .green = 0.47843137254901963, .blue = 1.0, .alpha = 1.0}};
}

}  // namespace quillmar
