#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <string>

#include "app/country_selection_view.h"
#include "app/role_selection_view.h"
#include "presentation/key_commands.h"
#include "testing/ui/parent_stage.h"
#include "ui/bridge/shown_text.h"

// Keys perform what a control of the screen could do now.
namespace quillmar::ui {
namespace {

constexpr auto control = Qt::ControlModifier;

struct Keys : testing::Test {
  Keys() { showFamily(stage); }

  std::size_t loads() { return stage.application.machine.http.requests("GET", "/children").size(); }
  DeviceListView& family() { return dashboard(stage); }

  UiStage stage{{.stored = signedInParent()}};
};

TEST_F(Keys, refresh_the_dashboard) {
  const auto before = loads();
  stage.press(Qt::Key_F5);
  EXPECT_EQ(loads(), before + 1);
  stage.press(Qt::Key_R, control);
  EXPECT_EQ(loads(), before + 2);
}

TEST_F(Keys, do_nothing_on_a_screen_without_such_a_control) {
  family().openSettings();
  stage.settle();
  const auto before = stage.application.machine.http.requests().size();
  stage.press(Qt::Key_F5);
  stage.press(Qt::Key_N, control);
  stage.press(Qt::Key_F, control);
  stage.press(Qt::Key_1, control);
  EXPECT_EQ(stage.application.machine.http.requests().size(), before);
  EXPECT_TRUE(family().showSettings());
  EXPECT_FALSE(family().showAddChild());
  EXPECT_FALSE(family().filter.isOpen());
  EXPECT_FALSE(family().showChildDetail());
}

TEST_F(Keys, try_a_failed_load_again_and_nothing_else) {
  stage.application.machine.http.answerAlways("GET", "/family", 500, R"({"error":"No luck"})");
  family().openFamilyMembers();
  stage.settle();
  stage.press(Qt::Key_Escape);  // the alert
  auto& http = stage.application.machine.http;
  ASSERT_TRUE(stage.application.screen<FamilyMembersView>().tryAgain.isEnabled());
  const auto before = http.requests("GET", "/family").size();
  stage.press(Qt::Key_F5);
  EXPECT_GT(http.requests("GET", "/family").size(), before);
}

TEST_F(Keys, do_nothing_while_their_control_is_disabled) {
  openFamily(stage);
  ASSERT_FALSE(stage.application.screen<FamilyMembersView>().tryAgain.isEnabled());
  const auto before = stage.application.machine.http.requests().size();
  stage.press(Qt::Key_F5);
  EXPECT_EQ(stage.application.machine.http.requests().size(), before);
}

TEST_F(Keys, add_a_child) {
  stage.press(Qt::Key_N, control);
  EXPECT_TRUE(family().showAddChild());
}

TEST_F(Keys, open_the_settings) {
  stage.press(Qt::Key_Comma, control);
  EXPECT_TRUE(family().showSettings());
}

TEST_F(Keys, choose_a_child_by_its_place) {
  stage.press(Qt::Key_2, control);
  ASSERT_TRUE(family().showChildDetail());
  EXPECT_EQ(stage.application.screen<ChildDetailView>().name(), "Theo");
}

TEST_F(Keys, choose_no_child_that_is_not_there) {
  stage.press(Qt::Key_4, control);
  stage.press(Qt::Key_9, control);
  stage.press(Qt::Key_0, control);
  EXPECT_FALSE(family().showChildDetail());
}

TEST_F(Keys, choose_among_the_children_that_are_shown) {
  stage.press(Qt::Key_F, control);
  stage.type("ida");
  stage.press(Qt::Key_1, control);
  ASSERT_TRUE(family().showChildDetail());
  EXPECT_EQ(stage.application.screen<ChildDetailView>().name(), "Ida");
}

TEST_F(Keys, go_back) {
  for (const auto& [key, modifier] :
       {std::pair(Qt::Key_Left, Qt::AltModifier), {Qt::Key_Escape, Qt::NoModifier}}) {
    openSettings(stage);
    stage.press(key, modifier);
    EXPECT_FALSE(family().showSettings()) << key;
  }
}

TEST_F(Keys, close_the_sheet_on_top_only) {
  openManual(stage);
  stage.press(Qt::Key_Left, Qt::AltModifier);
  EXPECT_TRUE(family().showAddDevice());
  EXPECT_FALSE(stage.application.screen<AddDeviceSheet>().showManualEnrollment());
  stage.press(Qt::Key_Left, Qt::AltModifier);
  EXPECT_FALSE(family().showAddDevice());
  stage.press(Qt::Key_Left, Qt::AltModifier);
  EXPECT_TRUE(stage.shows("My Family"));
}

TEST_F(Keys, do_not_reach_the_page_below_a_sheet) {
  openSettings(stage);
  const auto before = loads();
  stage.press(Qt::Key_R, control);
  EXPECT_EQ(loads(), before);
}

TEST_F(Keys, do_not_reach_the_page_below_a_question) {
  family().logout();
  stage.settle();
  const auto before = loads();
  stage.press(Qt::Key_F5);
  stage.press(Qt::Key_N, control);
  EXPECT_EQ(loads(), before);
  EXPECT_FALSE(family().showAddChild());
  stage.press(Qt::Key_Left, Qt::AltModifier);
  EXPECT_TRUE(family().logoutConfirmation.isShown()) << "the question goes by its own buttons";
}

TEST_F(Keys, do_not_reach_the_page_below_a_menu) {
  stage.click("AM");
  ASSERT_TRUE(stage.shows("Home Network"));
  stage.press(Qt::Key_N, control);
  EXPECT_FALSE(family().showAddChild());
}

TEST_F(Keys, act_once_while_held_down) {
  openManual(stage);
  QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, QString(), true);
  QCoreApplication::sendEvent(&stage.window(), &repeated);
  stage.settle();
  EXPECT_TRUE(stage.application.screen<AddDeviceSheet>().showManualEnrollment());
}

TEST_F(Keys, list_themselves) {
  stage.press(Qt::Key_F1);
  EXPECT_TRUE(stage.shows("Keys"));
  for (const KeyBinding& binding : keyBindings) {
    const bool isOffered = binding.command != Command::back;
    EXPECT_EQ(stage.shows(exactText(binding.effect)), isOffered) << binding.effect;
    EXPECT_EQ(stage.shows(exactText(writtenKeys(binding))), isOffered) << binding.effect;
  }
  const auto before = loads();
  stage.press(Qt::Key_F5);
  EXPECT_EQ(loads(), before) << "reached the page below the list";
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(stage.shows("Keys"));
}

TEST_F(Keys, list_those_of_the_sheet_on_top) {
  openSettings(stage);
  stage.press(Qt::Key_F1);
  EXPECT_TRUE(stage.shows("Go back"));
  EXPECT_FALSE(stage.shows("Add a child"));
  stage.press(Qt::Key_F1);
  EXPECT_FALSE(stage.shows("Keys"));
  EXPECT_TRUE(family().showSettings());
}

TEST(KeysOfARole, go_back_from_the_regions) {
  UiStage stage;
  stage.application.screen<RoleSelectionView>().cards.find("parent")->action();
  stage.settle();
  ASSERT_TRUE(stage.application.screen<RoleSelectionView>().countrySelection);
  stage.press(Qt::Key_Left, Qt::AltModifier);
  EXPECT_FALSE(stage.application.screen<RoleSelectionView>().countrySelection);
}

}  // namespace
}  // namespace quillmar::ui
