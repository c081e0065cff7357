#include <gtest/gtest.h>

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <chrono>
#include <string>

#include "tests/ui/support/child_page.h"

namespace quillmar::ui {
namespace {

using namespace std::chrono_literals;
using Pointer = UiStage::Pointer;

// The answer to every change of the policy; the sites stay the same.
constexpr auto policy =
    R"({"id":"p1","child_id":"c1","family_id":"f","is_blocked":false,"block_mode":"blacklist","blocked_domains":["games.example","video.example"],"allowed_domains":["school.example","Library.example.org"],"created_at":"c","updated_at":"u"})";

constexpr auto allowCall = "POST /children/c1/policy/allow";
constexpr auto blockCall = "POST /children/c1/policy/block";
constexpr auto removeCall = "DELETE /children/c1/policy/allow/Library.example.org";

// A window that is high enough to need no scrolling.
struct ParentChildPage : testing::Test, ChildPage {
  explicit ParentChildPage(QSize size = {390, 2600})
      : ChildPage({.stored = signedInParent(), .size = size}, policy) {
    http().answerAlways("PUT", "/children/c1/policy", 200, policy);
  }

  QQuickItem& row(const QString& name) { return stage.requiredControl(name); }
  RecentActivityRow& gamesRow() {
    for (std::size_t i = 0; i < screen().activitySection.recent.rows.size(); ++i) {
      if (screen().activitySection.recent.rows[i].site() == "games.example") {
        return screen().activitySection.recent.rows[i];
      }
    }
    throw std::logic_error("no such row");
  }
  // The distance by which the row's face has moved.
  static double shift(const QQuickItem& item) {
    for (const auto* const child : item.childItems()) {
      if (child->inherits("QQuickMouseArea")) {
        return child->x();
      }
    }
    throw std::logic_error("not a row that can be drawn aside");
  }
};

class GestureTest : public ParentChildPage, public testing::WithParamInterface<Pointer> {
 protected:
  // Far enough from the centre that two touches are not a double tap.
  static constexpr QPoint beside{60, 0};
  // To where no row shows its button.
  void pointAway() { stage.pointAt({1, 1}); }
  void drag(const QString& name, QPoint way, UiStage::Ending ending = UiStage::Ending::letGo,
            QPoint start = {}) {
    stage.drag(GetParam(), middleOf(row(name)) + start, way, ending);
  }
};

TEST_P(GestureTest, a_site_is_not_allowed_at_80_points_and_is_at_81) {
  drag("games.example", {80, 0});
  EXPECT_EQ(changes(), std::vector<std::string>());
  EXPECT_EQ(shift(row("games.example")), 0) << "the row stuck";
  drag("games.example", {81, 0});
  EXPECT_EQ(changes(), std::vector<std::string>{allowCall});
  EXPECT_EQ(shift(row("games.example")), 0) << "the row stuck";
}

TEST_P(GestureTest, a_row_follows_the_drag_and_shows_its_action) {
  EXPECT_FALSE(stage.shows("Allow"));
  drag("games.example", {60, 0}, UiStage::Ending::holdOn);
  EXPECT_EQ(shift(row("games.example")), 60);
  EXPECT_TRUE(stage.shows("Allow"));
  stage.letGo(GetParam(), middleOf(row("games.example")) + QPoint(60, 0));
  pointAway();
  EXPECT_FALSE(stage.shows("Allow"));
}

TEST_P(GestureTest, a_steep_drag_does_not_move_a_row) {
  drag("games.example", {100, 50}, UiStage::Ending::holdOn);
  EXPECT_EQ(shift(row("games.example")), 0);
  stage.letGo(GetParam(), middleOf(row("games.example")) + QPoint(100, 50));
  EXPECT_EQ(changes(), std::vector<std::string>());

  drag("games.example", {100, 49});
  EXPECT_EQ(changes(), std::vector<std::string>{allowCall});
}

TEST_P(GestureTest, a_drag_the_wrong_way_does_nothing) {
  drag("games.example", {-120, 0}, UiStage::Ending::holdOn);
  EXPECT_EQ(shift(row("games.example")), 0);
  stage.letGo(GetParam(), middleOf(row("games.example")) - QPoint(120, 0));
  EXPECT_EQ(changes(), std::vector<std::string>());
}

TEST_P(GestureTest, a_site_that_is_already_allowed_neither_moves_nor_acts) {
  drag("school.example", {120, 0}, UiStage::Ending::holdOn);
  EXPECT_EQ(shift(row("school.example")), 0);
  stage.letGo(GetParam(), middleOf(row("school.example")) + QPoint(120, 0));
  EXPECT_EQ(changes(), std::vector<std::string>());
}

TEST_P(GestureTest, a_visited_site_is_blocked_by_more_than_80_points_to_the_right) {
  choose(ChildDetailTab::sitesAllowed);
  drag("example.co.uk", {80, 0});
  EXPECT_EQ(changes(), std::vector<std::string>());
  drag("example.co.uk", {81, 0});
  EXPECT_EQ(changes(), std::vector<std::string>{blockCall});
}

TEST_P(GestureTest, an_always_allowed_site_is_removed_by_more_than_80_points_to_the_left) {
  choose(ChildDetailTab::sitesAllowed);
  drag("Library.example.org", {-80, 0});
  drag("Library.example.org", {120, 0});
  drag("Library.example.org", {-90, 90});
  EXPECT_EQ(changes(), std::vector<std::string>());
  drag("Library.example.org", {-81, 0});
  EXPECT_EQ(changes(), std::vector<std::string>{removeCall});
}

TEST_P(GestureTest, an_open_device_shows_a_button_that_asks_before_unlinking) {
  drag("Mia's phone", {-150, 0});
  ASSERT_EQ(shift(row("Mia's phone")), -80);
  stage.drag(GetParam(), middleOf(*stage.find("Unlink")), {0, 0});
  EXPECT_TRUE(stage.shows("Unlink Device?"));
  EXPECT_EQ(shift(row("Mia's phone")), 0);
  EXPECT_EQ(changes(), std::vector<std::string>());
  stage.click("Cancel");
  EXPECT_FALSE(stage.shows("Unlink Device?"));
}

TEST_P(GestureTest, a_device_opens_beyond_80_points_and_a_tap_closes_it) {
  drag("Mia's phone", {-80, 0});
  EXPECT_EQ(shift(row("Mia's phone")), 0);
  pointAway();
  EXPECT_FALSE(stage.shows("Unlink"));
  drag("Mia's phone", {-81, 0}, UiStage::Ending::letGo, beside);
  EXPECT_EQ(shift(row("Mia's phone")), -80);
  EXPECT_TRUE(stage.shows("Unlink"));
  EXPECT_FALSE(stage.shows("Unlink Device?"));

  drag("Mia's phone", {0, 0});
  EXPECT_EQ(shift(row("Mia's phone")), 0);
  pointAway();
  EXPECT_FALSE(stage.shows("Unlink"));
}

TEST_P(GestureTest, an_open_device_is_closed_by_a_drag_to_the_right) {
  drag("Mia's phone", {-150, 0});
  drag("Mia's phone", {40, 0}, UiStage::Ending::letGo, beside);
  EXPECT_EQ(shift(row("Mia's phone")), 0);
}

TEST_P(GestureTest, a_tick_keeps_the_row_that_is_dragged) {
  drag("games.example", {60, 0}, UiStage::Ending::holdOn);
  const QPointer<QQuickItem> held = &row("games.example");
  const auto now = stage.application.machine.dispatch.now();
  for (const auto* id : {"d1", "d2", "d3", "d4", "d5"}) {
    http().answerAlways("GET", "/devices/" + std::string(id) + "/logs", 200,
                        R"({"logs":[)" + logJson(9, "new.example", false, now) + "," +
                            logJson(8, "cdn.games.example", true, now - 5s) + "]}");
  }
  stage.advance(2s);
  ASSERT_TRUE(stage.shows("new.example"));
  ASSERT_FALSE(stage.shows("video.example") && stage.control("video.example"));
  ASSERT_FALSE(held.isNull());
  EXPECT_EQ(stage.control("games.example"), held);
  EXPECT_EQ(shift(*held), 60);
  EXPECT_EQ(gamesRow().offset(), 60);
  stage.letGo(GetParam(), middleOf(*held) + QPoint(81, 0));
  EXPECT_EQ(shift(*held), 0);
}

INSTANTIATE_TEST_SUITE_P(Pointers, GestureTest, testing::Values(Pointer::mouse, Pointer::finger),
                         [](const auto& pointer) {
                           return std::string(pointer.param == Pointer::mouse ? "mouse" : "finger");
                         });

class ScrollTest : public ParentChildPage, public testing::WithParamInterface<Pointer> {
 protected:
  ScrollTest() : ParentChildPage({390, 844}) {}
  double place() {
    return around(stage.control("Mia's phone"), "QQuickFlickable")->property("contentY").toDouble();
  }
};

TEST_P(ScrollTest, a_drag_up_or_down_over_a_row_scrolls_the_page) {
  const double before = place();
  stage.drag(GetParam(), middleOf(row("Mia's phone")), {0, -150});
  EXPECT_GT(place(), before + 50);
  EXPECT_EQ(shift(row("Mia's phone")), 0);
  EXPECT_EQ(changes(), std::vector<std::string>());
}

TEST_P(ScrollTest, dragging_a_row_does_not_scroll_the_page) {
  const double before = place();
  stage.drag(GetParam(), middleOf(row("Mia's phone")), {-100, -20});
  EXPECT_EQ(place(), before);
  EXPECT_EQ(shift(row("Mia's phone")), -80);
}

TEST_P(ScrollTest, a_tick_does_not_scroll) {
  stage.focusOn("games.example");
  const double before = place();
  ASSERT_GT(before, 0);
  stage.advance(20s);
  EXPECT_EQ(place(), before);
  EXPECT_EQ(stage.focusedName(), "games.example");
}

INSTANTIATE_TEST_SUITE_P(Pointers, ScrollTest, testing::Values(Pointer::mouse, Pointer::finger));

// The ways to open a row's context menu.
struct Opening {
  const char* name;
  std::function<void(UiStage&, const QQuickItem&)> act;
};
void PrintTo(const Opening& opening, std::ostream* out) { *out << opening.name; }

class ContextMenuTest : public ParentChildPage, public testing::WithParamInterface<Opening> {
 protected:
  void open(const QString& name) {
    stage.focusOn(name);
    GetParam().act(stage, row(name));
  }
  bool menuHas(const QString& text) const {
    bool has = false;
    forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
      has = has || (item.inherits("QQuickMenuItem") && accessibleName(item) == text);
    });
    return has;
  }
};

TEST_P(ContextMenuTest, has_the_action_of_a_swipe) {
  open("games.example");
  ASSERT_TRUE(menuHas("Allow"));
  EXPECT_EQ(changes(), std::vector<std::string>());
  stage.press(Qt::Key_Down);
  EXPECT_EQ(stage.focusedName(), "Allow");
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(menuHas("Allow"));
  EXPECT_EQ(changes(), std::vector<std::string>{allowCall});
  EXPECT_EQ(stage.focusedName(), "games.example");
}

TEST_P(ContextMenuTest, escape_closes_it_without_an_action) {
  open("Tablet");
  ASSERT_TRUE(menuHas("Unlink"));
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(menuHas("Unlink"));
  EXPECT_FALSE(stage.shows("Unlink Device?"));
  EXPECT_EQ(stage.focusedName(), "Tablet");
}

TEST_P(ContextMenuTest, a_click_performs_the_action) {
  open("Tablet");
  stage.click("Unlink");
  EXPECT_TRUE(stage.shows("Unlink Device?"));
}

TEST_P(ContextMenuTest, does_not_open_without_an_action) {
  open("school.example");
  EXPECT_FALSE(menuHas("Allow"));
}

INSTANTIATE_TEST_SUITE_P(Openings, ContextMenuTest,
                         testing::Values(Opening{"right button",
                                                 [](UiStage& stage, const QQuickItem& row) {
                                                   stage.clickAt(middleOf(row), Qt::RightButton);
                                                 }},
                                         Opening{"menu key",
                                                 [](UiStage& stage, const QQuickItem& /*row*/) {
                                                   stage.press(Qt::Key_Menu);
                                                 }},
                                         Opening{"Shift-F10", [](UiStage& stage, const QQuickItem& /*row*/) {
                                                   stage.press(Qt::Key_F10, Qt::ShiftModifier);
                                                 }}));

TEST_F(ParentChildPage, rows_perform_their_action_once_by_their_key) {
  stage.focusOn("games.example");
  stage.press(Qt::Key_Delete);
  EXPECT_EQ(changes(), std::vector<std::string>());
  stage.press(Qt::Key_Return);
  EXPECT_EQ(changes(), std::vector<std::string>{allowCall});

  stage.focusOn("Mia's phone");
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(stage.shows("Unlink Device?"));
  stage.press(Qt::Key_Delete);
  ASSERT_TRUE(stage.shows("Unlink Device?"));
  EXPECT_EQ(stage.focusedName(), "Cancel");
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(stage.focusedName(), "Mia's phone");

  choose(ChildDetailTab::sitesAllowed);
  stage.focusOn("example.co.uk");
  stage.press(Qt::Key_Enter);
  EXPECT_EQ(changes(), std::vector<std::string>{blockCall});
  http().forgetRequests();
  stage.focusOn("Library.example.org");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(changes(), std::vector<std::string>());
  stage.press(Qt::Key_Delete);
  EXPECT_EQ(changes(), std::vector<std::string>{removeCall});
}

TEST_F(ParentChildPage, a_site_that_is_already_allowed_ignores_its_key) {
  stage.focusOn("school.example");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(changes(), std::vector<std::string>());
}

TEST_F(ParentChildPage, the_tabs_are_one_tab_stop_and_the_arrow_keys_switch_them) {
  stage.focusOn("Sites Blocked");
  stage.focusOn("Real-Time");
  stage.press(Qt::Key_Right);
  EXPECT_EQ(screen().selectedTab(), ChildDetailTab::sitesBlocked);
  EXPECT_EQ(stage.focusedName(), "Sites Blocked");
  stage.press(Qt::Key_Right);
  EXPECT_EQ(screen().selectedTab(), ChildDetailTab::sitesAllowed);
  EXPECT_EQ(stage.focusedName(), "Sites Allowed");
  EXPECT_TRUE(stage.shows("Sites Visited"));
  stage.press(Qt::Key_Right);
  EXPECT_EQ(screen().selectedTab(), ChildDetailTab::realTime);
  stage.press(Qt::Key_Left);
  EXPECT_EQ(screen().selectedTab(), ChildDetailTab::sitesAllowed);
}

TEST_F(ParentChildPage, the_arrow_keys_move_between_the_chips_and_a_press_chooses_one) {
  choose(ChildDetailTab::sitesBlocked);
  stage.focusOn("Last 5 min");
  stage.press(Qt::Key_Right);
  EXPECT_EQ(stage.focusedName(), "Last Hour");
  EXPECT_EQ(screen().activitySection.blockedTimeFilter(), ActivityTimeFilter::realTime)
      << "walking is not choosing";
  stage.press(Qt::Key_Space);
  EXPECT_EQ(screen().activitySection.blockedTimeFilter(), ActivityTimeFilter::lastHour);
  EXPECT_EQ(stage.focusedName(), "Last Hour");
  stage.press(Qt::Key_Right);
  stage.press(Qt::Key_Return);
  EXPECT_EQ(screen().activitySection.blockedTimeFilter(), ActivityTimeFilter::today);
  stage.press(Qt::Key_Left);
  EXPECT_EQ(stage.focusedName(), "Last Hour");
  EXPECT_TRUE(stage.control("Today")->property("current").toBool());
}

TEST_F(ParentChildPage, the_toggle_sends_one_request_for_each_flip) {
  stage.focusOn("Block the Internet");
  stage.press(Qt::Key_Space);
  EXPECT_TRUE(screen().policySection.isBlocked());
  EXPECT_EQ(changes(), std::vector<std::string>{"PUT /children/c1/policy"});
  EXPECT_TRUE(stage.focused()->property("checked").toBool());
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(screen().policySection.isBlocked());
  EXPECT_EQ(changes().size(), 2U);
  stage.tap(middleOf(*stage.control("Block the Internet")));
  EXPECT_TRUE(screen().policySection.isBlocked());
  EXPECT_EQ(changes().size(), 3U);
}

TEST_F(ParentChildPage, the_toggle_follows_its_model_after_it_was_flipped_by_hand) {
  stage.focusOn("Block the Internet");
  stage.press(Qt::Key_Space);
  screen().policySection.isBlocked = false;
  stage.settle();
  EXPECT_FALSE(stage.focused()->property("checked").toBool());
}

TEST_F(ParentChildPage, the_explanation_of_the_live_list_is_between_its_title_and_its_rows) {
  const auto place = [this](const QString& text) { return middleOf(*stage.find(text)).y(); };
  const QString help =
      "Sites visited in the last 60 seconds will appear here. Swipe right to add to allowed list.";
  ASSERT_TRUE(stage.shows(help));
  EXPECT_GT(place(help), place("Swipe right to allow"));
  EXPECT_LT(place(help), middleOf(row("school.example")).y());

  screen().activitySection.recent.rows.assign({});
  stage.settle();
  EXPECT_GT(place(help), place("Recent Activity"));
  EXPECT_LT(place(help), place("No recent activity"));
}

TEST_F(ParentChildPage, only_its_button_adds_a_site) {
  stage.focusOn("Add allowed site (e.g., example.com)");
  stage.press(Qt::Key_Tab);
  EXPECT_NE(stage.focusedName(), "Add") << "there is nothing to add yet";
  stage.focusOn("Add allowed site (e.g., example.com)");
  stage.type("new.example");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(changes(), std::vector<std::string>());
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "Add");
  stage.press(Qt::Key_Space);
  EXPECT_EQ(changes(), std::vector<std::string>{allowCall});
}

struct ChildSheet {
  const char* control;
  const char* shows;
};
void PrintTo(const ChildSheet& way, std::ostream* out) { *out << way.control; }

class ChildSheetTest : public ParentChildPage, public testing::WithParamInterface<ChildSheet> {};

TEST_P(ChildSheetTest, opens_closes_and_returns_the_focus) {
  stage.focusOn(GetParam().control);
  for (const bool byKey : {true, false}) {
    stage.press(Qt::Key_Return);
    ASSERT_TRUE(stage.shows(GetParam().shows));
    byKey ? stage.press(Qt::Key_Escape) : stage.click("Cancel");
    EXPECT_FALSE(stage.shows(GetParam().shows));
    EXPECT_EQ(stage.focusedName(), GetParam().control);
  }
}

INSTANTIATE_TEST_SUITE_P(Sheets, ChildSheetTest,
                         testing::Values(ChildSheet{"Edit name", "Child Name"},
                                         ChildSheet{"Link Device", "Link Existing Device"},
                                         ChildSheet{"Delete Child Profile", "Delete Mia?"}));

}  // namespace
}  // namespace quillmar::ui
