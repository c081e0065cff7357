#include "app/country_selection_view.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/role_selection_view.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

using Names = std::vector<std::string>;

struct CountrySelection : testing::Test {
  CountrySelection() { goForward(); }

  void goForward() {
    app.screen<RoleSelectionView>().cards.find("parent")->action();
    app.settle();
  }
  CountrySelectionView& screen() { return app.screen<CountrySelectionView>(); }

  TestApplication app;
  RoleManager& roles = *app.environment().roleManager();
};

TEST_F(CountrySelection, starts_at_australia_with_one_card_per_region) {
  EXPECT_EQ(screen().selectedRegion(), Region::australia);
  ASSERT_EQ(screen().regionCards.size(), 3U);
  EXPECT_EQ(screen().regionCards[0].name(), "Australia");
  EXPECT_EQ(screen().regionCards[1].name(), "New Zealand");
  EXPECT_EQ(screen().regionCards[2].name(), "Singapore");
  EXPECT_EQ(screen().regionCards[2].flag(), "🇸🇬");
}

TEST_F(CountrySelection, only_the_tapped_card_is_selected_and_nothing_is_stored) {
  screen().regionCards.find("singapore")->action();
  EXPECT_FALSE(screen().regionCards[0].isSelected());
  EXPECT_FALSE(screen().regionCards[1].isSelected());
  EXPECT_TRUE(screen().regionCards[2].isSelected());
  EXPECT_EQ(roles.selectedRegion(), std::nullopt);
  EXPECT_EQ(app.machine.settings.writes(), 0);
}

TEST_F(CountrySelection, a_card_follows_a_selection_made_elsewhere) {
  int heard = 0;
  const auto listening = screen().regionCards[0].observe([&](const Member& /*any*/) { ++heard; });
  screen().regionCards[1].action();
  EXPECT_EQ(heard, 1);
}

TEST_F(CountrySelection, back_stores_nothing_and_resets_the_selection) {
  screen().regionCards.find("newzealand")->action();
  screen().goBack();
  app.settle();
  EXPECT_EQ(app.screenNames(), Names{"RoleSelectionView"});
  EXPECT_FALSE(roles.pendingParentSelection());
  EXPECT_EQ(roles.selectedRegion(), std::nullopt);
  EXPECT_EQ(app.machine.settings.writes(), 0);

  goForward();
  EXPECT_EQ(screen().selectedRegion(), Region::australia);
  EXPECT_TRUE(screen().isDetectingLocation());
}

TEST_F(CountrySelection, continuing_stores_the_region_before_the_role) {
  std::vector<std::string> steps;
  const auto pending = roles.pendingParentSelection.onChange([&] { steps.emplace_back("pending"); });
  const auto region = roles.selectedRegion.onChange([&] {
    steps.emplace_back("region");
    EXPECT_FALSE(app.machine.settings.object("com.quillmar.region").has_value());
  });
  const auto role = roles.currentRole.onChange([&] {
    steps.emplace_back("role");
    EXPECT_EQ(app.machine.settings.string("com.quillmar.region"), "singapore");
  });
  screen().regionCards.find("singapore")->action();
  screen().confirmRegion();
  EXPECT_EQ(steps, (std::vector<std::string>{"pending", "region", "role"}));
  EXPECT_EQ(app.machine.settings.string("com.quillmar.deviceRole"), "parent");
  app.settle();
  EXPECT_EQ(app.screenNames(), Names{"LoginView"});
}

TEST_F(CountrySelection, continue_is_always_enabled) {
  EXPECT_TRUE(screen().confirmRegion.isEnabled());
  screen().regionCards[1].action();
  EXPECT_TRUE(screen().confirmRegion.isEnabled());
}

TEST_F(CountrySelection, the_detection_is_only_a_timer) {
  app.advance(std::chrono::milliseconds(499));
  EXPECT_TRUE(screen().isDetectingLocation());
  app.advance(std::chrono::milliseconds(1));
  EXPECT_FALSE(screen().isDetectingLocation());
  EXPECT_EQ(screen().selectedRegion(), Region::australia);
}

TEST_F(CountrySelection, the_texts_are_exact) {
  EXPECT_EQ(screen().backTitle(), "Back");
  EXPECT_EQ(screen().heading(), "Select Your Region");
  EXPECT_EQ(screen().explanation(), "Choose the region closest to you for the best performance");
  EXPECT_EQ(screen().continueTitle(), "Continue");
}

}  // namespace
}  // namespace quillmar
