#include <gtest/gtest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <chrono>
#include <string>
#include <vector>

#include "testing/ui/parent_stage.h"

// The sites that were just added and can be taken back.
namespace quillmar::ui {
namespace {

using namespace std::chrono_literals;

constexpr auto withGames =
    R"({"id":"p1","child_id":"c1","family_id":"f","is_blocked":false,"block_mode":"blacklist","blocked_domains":["games.example","video.example"],"allowed_domains":["school.example","Library.example.org","games.example"],"created_at":"c","updated_at":"u"})";
constexpr auto withoutGames =
    R"({"id":"p1","child_id":"c1","family_id":"f","is_blocked":false,"block_mode":"blacklist","blocked_domains":["games.example","video.example"],"allowed_domains":["school.example","Library.example.org"],"created_at":"c","updated_at":"u"})";
constexpr auto undoName = "Undo: Allowed games.example";
constexpr auto undoCall = "DELETE /children/c1/policy/allow/games.example";

struct AddedSitesOnPage : testing::Test {
  AddedSitesOnPage() : stage({.stored = signedInParent(), .size = {390, 844}}) {
    openChild(stage).selectedTab = ChildDetailTab::sitesBlocked;
    stage.settle();
    http().answerAlways("POST", "/children/c1/policy/allow", 200, withGames);
    http().answerAlways("DELETE", "/children/c1/policy/allow/games.example", 200, withoutGames);
    http().forgetRequests();
  }
  UiStage stage;

  ScriptedHttpSession& http() { return stage.application.machine.http; }
  void allowGames() {
    stage.drag(UiStage::Pointer::finger, middleOf(*stage.control("games.example")), {120, 0});
    ASSERT_TRUE(stage.shows("Allowed"));
  }
  std::size_t undoCalls() { return http().count("DELETE", "/children/c1/policy/allow/games.example"); }
};

TEST_F(AddedSitesOnPage, a_tap_takes_the_site_back) {
  EXPECT_FALSE(stage.shows("Undo"));
  allowGames();
  ASSERT_TRUE(stage.shows("Undo"));
  stage.tap(middleOf(*stage.control(undoName)));
  EXPECT_EQ(http().calls().back(), undoCall);
  EXPECT_FALSE(stage.shows("Undo"));
  EXPECT_FALSE(stage.shows("Now Allowed"));
}

TEST_F(AddedSitesOnPage, a_double_tap_sends_one_call) {
  allowGames();
  const QPoint place = middleOf(*stage.control(undoName));
  QTest::mouseClick(&stage.window(), Qt::LeftButton, Qt::NoModifier, place);
  QTest::mouseClick(&stage.window(), Qt::LeftButton, Qt::NoModifier, place);
  stage.settle();
  EXPECT_EQ(undoCalls(), 1U);
}

TEST_F(AddedSitesOnPage, the_keyboard_reaches_it_and_keeps_its_way_afterwards) {
  allowGames();
  stage.tabTo(undoName);
  stage.press(Qt::Key_Space);
  EXPECT_EQ(undoCalls(), 1U);
  EXPECT_FALSE(stage.shows("Undo"));
  stage.press(Qt::Key_Tab);
  EXPECT_FALSE(stage.focusedName().isEmpty());
}

TEST_F(AddedSitesOnPage, a_screen_reader_is_told_and_can_press_it) {
  allowGames();
  int messages = 0;
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    auto* const accessible = QAccessible::queryAccessibleInterface(const_cast<QQuickItem*>(&item));
    messages += accessible && accessible->role() == QAccessible::AlertMessage &&
                        accessible->text(QAccessible::Name) == "Allowed games.example"
                    ? 1
                    : 0;
  });
  EXPECT_EQ(messages, 1);
  auto* const button = QAccessible::queryAccessibleInterface(stage.control(undoName));
  ASSERT_NE(button, nullptr);
  button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  stage.settle();
  EXPECT_EQ(undoCalls(), 1U);
}

TEST_F(AddedSitesOnPage, it_goes_by_itself_even_with_the_focus) {
  allowGames();
  stage.tabTo(undoName);
  stage.advance(10s);
  EXPECT_FALSE(stage.shows("Undo"));
  stage.press(Qt::Key_Tab);
  EXPECT_FALSE(stage.focusedName().isEmpty());
  EXPECT_EQ(undoCalls(), 0U);
}

TEST_F(AddedSitesOnPage, keeps_presses_from_the_content_below_which_can_be_scrolled_free) {
  allowGames();
  stage.application.screen<ChildDetailView>().selectedTab = ChildDetailTab::realTime;
  stage.settle();
  auto* const page = around(stage.control("Delete Child Profile"), "QQuickFlickable");
  ASSERT_NE(page, nullptr);
  page->setProperty("contentY", page->property("contentHeight").toDouble() - page->height());
  stage.settle();
  const auto& button = *stage.control("Delete Child Profile");
  const auto& undo = *stage.control(undoName);
  EXPECT_LT(button.mapToScene({0, button.height()}).y(), undo.mapToScene({0, 0}).y());

  page->setProperty("contentY", page->property("contentY").toDouble() - 80);
  stage.settle();
  stage.clickAt({100, middleOf(undo).y()});
  EXPECT_FALSE(stage.shows("Delete Mia?"));
}

TEST_F(AddedSitesOnPage, closing_the_page_ends_it) {
  allowGames();
  stage.click("Done");
  EXPECT_FALSE(stage.shows("Undo"));
  EXPECT_EQ(undoCalls(), 0U);
}

TEST_F(AddedSitesOnPage, in_a_wide_window_the_button_stays_near_its_site) {
  stage.window().resize(1920, 1080);
  stage.settle();
  allowGames();
  const auto* const site = stage.find("games.example");
  ASSERT_NE(site, nullptr);
  EXPECT_LT(stage.control(undoName)->mapToScene({0, 0}).x() - stage.find("Allowed")->mapToScene({0, 0}).x(),
            600);
}

}  // namespace
}  // namespace quillmar::ui
