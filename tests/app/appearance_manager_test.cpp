#include "app/session/appearance_manager.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/fake_window_style.h"
#include "testing/memory_settings_store.h"

namespace quillmar {
namespace {

struct Appearance : testing::Test {
  MemorySettingsStore settings;
  FakeWindowStyle windows;

  void store(const std::string& text) { settings.set("appearanceMode", text); }
};

TEST_F(Appearance, a_new_installation_follows_the_system) {
  const AppearanceManager appearance(settings, windows);
  EXPECT_EQ(appearance.currentMode(), AppearanceMode::system);
  EXPECT_EQ(appearance.colorScheme(), std::nullopt);
  EXPECT_EQ(windows.styles.back(), UserInterfaceStyle::unspecified);
  EXPECT_EQ(settings.writes(), 0);
}

TEST_F(Appearance, an_unknown_stored_mode_counts_as_system_and_stays_stored) {
  for (const std::string text : {"dark", "DARK", " Dark", ""}) {
    store(text);
    const int writes = settings.writes();
    const AppearanceManager appearance(settings, windows);
    EXPECT_EQ(appearance.currentMode(), AppearanceMode::system) << text;
    EXPECT_EQ(settings.string("appearanceMode"), text);
    EXPECT_EQ(settings.writes(), writes);
  }
}

TEST_F(Appearance, a_stored_mode_is_applied_and_not_written) {
  store("Dark");
  const int writes = settings.writes();
  const AppearanceManager appearance(settings, windows);
  EXPECT_EQ(appearance.currentMode(), AppearanceMode::dark);
  EXPECT_EQ(appearance.colorScheme(), ColorScheme::dark);
  EXPECT_EQ(windows.styles.back(), UserInterfaceStyle::dark);
  EXPECT_EQ(settings.writes(), writes);
}

TEST_F(Appearance, every_assignment_is_stored_and_applied) {
  AppearanceManager appearance(settings, windows);
  appearance.currentMode = AppearanceMode::light;
  EXPECT_EQ(settings.string("appearanceMode"), "Light");
  EXPECT_EQ(appearance.colorScheme(), ColorScheme::light);
  EXPECT_EQ(windows.styles.back(), UserInterfaceStyle::light);
  const int writes = settings.writes();
  appearance.currentMode = AppearanceMode::light;
  EXPECT_EQ(settings.writes(), writes + 1) << "assigning what is set already stores it too";
}

TEST_F(Appearance, returning_to_system_removes_the_forced_scheme) {
  store("Dark");
  AppearanceManager appearance(settings, windows);
  appearance.currentMode = AppearanceMode::system;
  EXPECT_EQ(appearance.colorScheme(), std::nullopt);
  EXPECT_EQ(windows.styles.back(), UserInterfaceStyle::unspecified);
  EXPECT_EQ(settings.string("appearanceMode"), "System");
}

TEST_F(Appearance, three_steps_of_the_cycle_return_to_the_start) {
  store("Dark");
  AppearanceManager appearance(settings, windows);
  std::vector<AppearanceMode> seen;
  for (int step = 0; step < 3; ++step) {
    appearance.cycleMode();
    seen.push_back(appearance.currentMode());
  }
  EXPECT_EQ(seen, (std::vector{AppearanceMode::system, AppearanceMode::light, AppearanceMode::dark}));
}

TEST(BarAppearance, is_fixed) {
  const auto bars = barAppearance();
  EXPECT_EQ(bars.title, (BarTitle{17, false}));
  EXPECT_EQ(bars.largeTitle, (BarTitle{34, true}));
  EXPECT_EQ(bars.tint, (BarAppearance::Tint{0.0, 0.47843137254901963, 1.0, 1.0}));
}

}  // namespace
}  // namespace quillmar
