#include "app/role_selection_view.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/test_application.h"

namespace quillmar {
namespace {

using Names = std::vector<std::string>;

struct RoleSelection : testing::Test {
  TestApplication app;
  RoleSelectionView& screen = app.screen<RoleSelectionView>();
  RoleManager& roles = *app.environment().roleManager();
};

TEST_F(RoleSelection, a_first_start_shows_the_cards_and_sends_nothing) {
  app.advance(std::chrono::hours(1));
  EXPECT_EQ(app.screenNames(), Names{"RoleSelectionView"});
  EXPECT_TRUE(app.machine.http.requests().empty());
  EXPECT_TRUE(app.machine.tunnel.calls().empty());
  EXPECT_EQ(app.machine.settings.writes(), 0);
}

TEST_F(RoleSelection, the_cards_are_in_order_with_their_texts) {
  ASSERT_EQ(screen.cards.size(), 2U);
  EXPECT_EQ(screen.cards[0].role(), DeviceRole::parent);
  EXPECT_EQ(screen.cards[0].icon(), "person.2.fill");
  EXPECT_EQ(screen.cards[0].title(), "I'm a Parent");
  EXPECT_EQ(screen.cards[0].subtitle(), "Manage and monitor your children's devices");
  EXPECT_EQ(screen.cards[1].role(), DeviceRole::child);
  EXPECT_EQ(screen.cards[1].icon(), "person.fill");
  EXPECT_EQ(screen.cards[1].title(), "I'm a Child");
  EXPECT_EQ(screen.cards[1].subtitle(), "This device will be monitored by a parent");
}

TEST_F(RoleSelection, a_child_is_stored_at_once_without_a_region) {
  screen.cards.find("child")->action();
  EXPECT_EQ(app.machine.settings.string("com.quillmar.deviceRole"), "child");
  EXPECT_FALSE(app.machine.settings.object("com.quillmar.region").has_value());
  EXPECT_EQ(roles.selectedRegion(), std::nullopt);
  app.settle();
  EXPECT_EQ(app.screenNames(), Names{"ChildEnrollmentView"});
}

TEST_F(RoleSelection, a_parent_continues_to_the_region_and_nothing_is_stored) {
  screen.cards.find("parent")->action();
  app.settle();
  EXPECT_TRUE(roles.pendingParentSelection());
  EXPECT_EQ(roles.currentRole(), DeviceRole::unset);
  EXPECT_EQ(app.machine.settings.writes(), 0);
  EXPECT_EQ(app.screenNames(), (Names{"RoleSelectionView", "CountrySelectionView"}));
}

TEST_F(RoleSelection, a_restart_on_the_region_screen_shows_the_cards_again) {
  screen.cards.find("parent")->action();
  app.restart();
  EXPECT_EQ(app.screenNames(), Names{"RoleSelectionView"});
  EXPECT_EQ(app.environment().roleManager()->currentRole(), DeviceRole::unset);
}

TEST_F(RoleSelection, the_regions_replace_the_cards_until_going_back) {
  EXPECT_TRUE(screen.showsCards());
  screen.cards.find("parent")->action();
  EXPECT_FALSE(screen.showsCards());
  screen.countrySelection->goBack();
  EXPECT_TRUE(screen.showsCards());
}

TEST_F(RoleSelection, the_cards_do_not_come_back_when_a_region_is_confirmed) {
  const auto held = app.find<RoleSelectionView>();
  screen.cards.find("parent")->action();
  screen.countrySelection->confirmRegion();
  EXPECT_FALSE(screen.countrySelection);
  EXPECT_FALSE(screen.showsCards());
  app.settle();
  EXPECT_FALSE(screen.showsCards());
}

TEST_F(RoleSelection, the_cards_stay_while_a_childs_screen_comes_up) {
  const auto held = app.find<RoleSelectionView>();
  screen.cards.find("child")->action();
  app.settle();
  EXPECT_TRUE(screen.showsCards());
}

TEST_F(RoleSelection, pressing_a_card_disables_nothing) {
  auto& card = *screen.cards.find("child");
  card.isPressed = true;
  EXPECT_TRUE(card.action.isEnabled());
  card.isPressed = false;
  EXPECT_TRUE(card.action.isEnabled());
}

TEST_F(RoleSelection, the_entry_animation_ends_at_rest) {
  EXPECT_EQ(screen.logoScale(), 1.0);
  EXPECT_EQ(screen.logoOpacity(), 1.0);
  EXPECT_EQ(screen.cardsOpacity(), 1.0);
  EXPECT_EQ(screen.cardsOffset(), 0.0);
}

TEST_F(RoleSelection, the_texts_are_exact) {
  EXPECT_EQ(screen.welcome(), "Welcome to Quillmar");
  EXPECT_EQ(screen.tagline(), "Family internet protection made simple");
  EXPECT_EQ(screen.question(), "Who will use this device?");
  EXPECT_EQ(screen.note(), "This choice is permanent. To change it, you'll need to reinstall the app.");
}

}  // namespace
}  // namespace quillmar
