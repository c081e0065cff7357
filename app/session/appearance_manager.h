#pragma once

#include <array>
#include <optional>

#include "foundation/observable.h"
#include "platform/settings_store.h"
#include "platform/window_style.h"

namespace quillmar {

enum class ColorScheme { light, dark };

template <>
inline constexpr std::array rawNames<ColorScheme> = rawCases<ColorScheme>({{ColorScheme::light, "light"},
                                                                           {ColorScheme::dark, "dark"}});

// The ordinals are those of the platform's styles.
enum class AppearanceMode { system = 0, light = 1, dark = 2 };

template <>
inline constexpr std::array rawNames<AppearanceMode> = rawCases<AppearanceMode>(
    {{AppearanceMode::system, "System"}, {AppearanceMode::light, "Light"}, {AppearanceMode::dark, "Dark"}});

// The choice between the desktop's colour scheme and a forced one. Every assignment to `currentMode` is
// stored and applied.
class AppearanceManager final : public ObservableObject {
 public:
  using AppearanceMode = quillmar::AppearanceMode;

  AppearanceManager(SettingsStore& settings, WindowStyle& windowStyle);

  // nullopt: follow the system.
  Published<std::optional<ColorScheme>> colorScheme{*this, "colorScheme"};
  Input<AppearanceMode> currentMode{*this, "currentMode", AppearanceMode::system};

  void saveMode();
  void applyMode();
  void cycleMode();

 private:
  SettingsStore& settings_;
  WindowStyle& windowStyle_;
  Subscription modeReaction_;
};

// The bars' look never changes; it is set once, before any screen is drawn.
BarAppearance barAppearance();

}  // namespace quillmar
