#include <gtest/gtest.h>

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <chrono>
#include <string>

#include "identity/auth_state.h"
#include "tests/ui/support/parent_stage.h"

namespace quillmar::ui {
namespace {

using namespace std::chrono_literals;

struct ParentDashboard : testing::Test {
  UiStage stage{{.stored = signedInParent()}};

  ParentDashboard() {
    showFamily(stage);
    http().answerAlways("GET", "/home-network", 200, homeNetworkJson("203.0.113.7", true));
    http().answerAlways("GET", "/family", 200, parentsJson(stage.application.machine.dispatch.now()));
  }

  DeviceListView& screen() { return dashboard(stage); }
  ScriptedHttpSession& http() { return stage.application.machine.http; }
  bool isMenuOpen() { return stage.shows("Theme: System"); }
  double scrolledBy() {
    return around(stage.control("Theo"), "QQuickFlickable")->property("contentY").toDouble();
  }
};

TEST_F(ParentDashboard, the_menu_opens_and_acts_by_the_keyboard) {
  stage.focusOn("AM");
  stage.press(Qt::Key_Return);
  ASSERT_TRUE(isMenuOpen());
  stage.press(Qt::Key_Down);
  EXPECT_EQ(stage.focusedName(), "Settings");
  stage.press(Qt::Key_Down);
  EXPECT_EQ(stage.focusedName(), "Family Members");
  stage.press(Qt::Key_Up);
  EXPECT_EQ(stage.focusedName(), "Settings");
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(isMenuOpen());
  EXPECT_TRUE(screen().showSettings());
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(screen().showSettings());
  EXPECT_EQ(stage.focusedName(), "AM");
}

TEST_F(ParentDashboard, the_menu_closes_by_escape_with_nothing_done) {
  stage.focusOn("AM");
  stage.press(Qt::Key_Space);
  ASSERT_TRUE(isMenuOpen());
  stage.press(Qt::Key_Down);
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(isMenuOpen());
  EXPECT_FALSE(screen().showSettings());
  EXPECT_EQ(stage.focusedName(), "AM");
}

TEST_F(ParentDashboard, the_menu_opens_and_acts_by_mouse_and_closes_beside_it) {
  stage.click("AM");
  ASSERT_TRUE(isMenuOpen());
  stage.clickAt({380, 800});
  EXPECT_FALSE(isMenuOpen());
  EXPECT_FALSE(screen().showAddChild()) << "the click went through to what lies under the menu";

  stage.click("AM");
  stage.click("Family Members");
  EXPECT_FALSE(isMenuOpen());
  EXPECT_TRUE(screen().showFamilyMembers());
}

TEST_F(ParentDashboard, the_menu_opens_and_acts_by_finger) {
  stage.tap(middleOf(*stage.control("AM")));
  ASSERT_TRUE(isMenuOpen());
  stage.tap(middleOf(*stage.find("Logout")));
  EXPECT_TRUE(screen().showLogoutConfirmation());
}

TEST_F(ParentDashboard, the_logout_is_asked_for_and_return_is_not_its_answer) {
  stage.click("AM");
  stage.click("Logout");
  ASSERT_TRUE(stage.shows("Are you sure you want to logout?"));
  EXPECT_EQ(stage.focusedName(), "Cancel");
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(stage.shows("Are you sure you want to logout?"));
  EXPECT_EQ(stage.focusedName(), "AM");
  EXPECT_TRUE(stage.application.environment().authState()->isLoggedIn());

  screen().logout();
  stage.settle();
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "Logout");
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(stage.application.environment().authState()->isLoggedIn());
  EXPECT_TRUE(stage.shows("Sign In"));
}

TEST_F(ParentDashboard, a_card_opens_its_child_by_click_key_and_finger) {
  stage.click("Mia");
  ASSERT_TRUE(screen().showChildDetail());
  EXPECT_EQ(screen().selectedChild()->id, "c1");
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(screen().showChildDetail());
  EXPECT_EQ(stage.focusedName(), "Mia");

  for (const auto key : {Qt::Key_Return, Qt::Key_Space}) {
    stage.focusOn("Theo");
    stage.press(key);
    ASSERT_TRUE(screen().showChildDetail());
    EXPECT_EQ(screen().selectedChild()->id, "c2");
    stage.press(Qt::Key_Escape);
  }
  stage.focusOn("Mia");
  stage.tap(middleOf(*stage.find("Mia")));
  EXPECT_TRUE(screen().showChildDetail());
}

TEST_F(ParentDashboard, the_button_in_a_card_does_not_open_the_card) {
  const auto addDevice = [this](const std::function<void()>& act) {
    stage.focusOn("Mia");
    act();
    EXPECT_TRUE(screen().showAddDevice());
    EXPECT_FALSE(screen().showChildDetail());
    EXPECT_EQ(screen().childForNewDevice()->id, "c1");
    stage.press(Qt::Key_Escape);
    EXPECT_FALSE(screen().showAddDevice());
    EXPECT_FALSE(screen().showChildDetail());
  };
  const auto button = [this] {
    auto* const card = stage.control("Mia");
    QPoint middle;
    forEachShown(*card, [&](const QQuickItem& item) {
      if (item.activeFocusOnTab() && accessibleName(item) == "Add Device") {
        middle = middleOf(item);
      }
    });
    return middle;
  };
  addDevice([&] { stage.clickAt(button()); });
  addDevice([&] { stage.tap(button()); });
  for (const auto key : {Qt::Key_Return, Qt::Key_Space}) {
    addDevice([&] {
      stage.press(Qt::Key_Tab);
      ASSERT_EQ(stage.focusedName(), "Add Device");
      stage.press(key);
    });
  }
}

TEST_F(ParentDashboard, a_silent_refresh_keeps_the_rows_the_focus_and_the_place) {
  stage.window().resize(390, 600);
  stage.settle();
  stage.focusOn("Theo");
  stage.press(Qt::Key_Tab);
  ASSERT_EQ(stage.focusedName(), "Add Device");
  const QPointer<QQuickItem> card = stage.control("Theo");
  const QPointer<QQuickItem> focused = stage.focused();
  const double place = scrolledBy();
  ASSERT_GT(place, 0) << "the page does not scroll";

  std::string changed = familyJson();
  changed.replace(changed.find("Theo's tablet"), 13, "A new tablet!");
  answerFamily(stage, changed);
  http().forgetRequests();
  stage.advance(30s);
  EXPECT_EQ(http().count("GET", "/children"), 1U);
  EXPECT_TRUE(stage.shows("A new tablet!"));
  EXPECT_EQ(stage.control("Theo"), card);
  EXPECT_EQ(stage.focused(), focused);
  EXPECT_EQ(scrolledBy(), place);
}

TEST_F(ParentDashboard, a_child_that_comes_in_first_leaves_the_other_rows_as_they_are) {
  stage.focusOn("Theo");
  const QPointer<QQuickItem> card = stage.control("Theo");
  std::string more = familyJson();
  more.insert(more.find("[") + 1, childJson("c0", "Noor", "") + ",");
  answerFamily(stage, more);
  stage.advance(30s);
  EXPECT_TRUE(stage.shows("Noor"));
  EXPECT_EQ(stage.control("Theo"), card);
  EXPECT_EQ(stage.focusedName(), "Theo");
}

TEST_F(ParentDashboard, goes_on_saying_how_long_ago_it_was_refreshed) {
  http().hold();
  stage.advance(3s);
  EXPECT_TRUE(stage.shows("Updated 3 sec. ago"));
  stage.application.app().setScenePhase(ScenePhase::background);
  stage.advance(8h);
  stage.application.app().setScenePhase(ScenePhase::active);
  stage.settle();
  EXPECT_TRUE(stage.shows("Updated 8 hr. ago"));
}

TEST_F(ParentDashboard, a_refresh_that_fails_takes_nothing_away_and_a_load_that_fails_all) {
  http().answerAlways("GET", "/children", 500, "");
  stage.advance(30s);
  EXPECT_TRUE(stage.shows("Theo"));
  stage.click("Refresh");
  EXPECT_FALSE(stage.shows("Theo"));
  EXPECT_TRUE(stage.shows("Welcome to Quillmar"));
}

TEST(ParentDashboardStart, is_loading_then_empty_then_a_list) {
  UiStage stage({.stored = signedInParent()});
  EXPECT_TRUE(stage.shows("Welcome to Quillmar"));
  auto& http = stage.application.machine.http;
  http.hold();
  dashboard(stage).loadChildren();
  stage.settle();
  EXPECT_TRUE(stage.shows("Loading..."));
  EXPECT_FALSE(stage.shows("Welcome to Quillmar"));

  answerFamily(stage, R"({"children":[],"unassigned_devices":[]})");
  http.releaseAll();
  stage.settle();
  EXPECT_FALSE(stage.shows("Loading..."));
  EXPECT_TRUE(stage.shows("Add Your First Child"));

  showFamily(stage);
  EXPECT_TRUE(stage.shows("Mia"));
  EXPECT_TRUE(stage.shows("+ 2 more"));
  EXPECT_FALSE(stage.shows("Add Your First Child"));
}

TEST(ParentDashboardStart, an_empty_family_begins_at_its_first_child) {
  UiStage stage({.stored = signedInParent()});
  stage.press(Qt::Key_Tab);
  stage.tabTo("Add Your First Child");
  stage.press(Qt::Key_Return);
  EXPECT_TRUE(dashboard(stage).showAddChild());
  EXPECT_EQ(stage.focusedName(), "Name");
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(stage.focusedName(), "Add Your First Child");
}

// Which control opens which sheet, by which text one knows it, and which control closes it.
struct Way {
  const char* control;
  const char* shows;
  const char* closing;
};
void PrintTo(const Way& way, std::ostream* out) { *out << way.control; }

class SheetTest : public ParentDashboard, public testing::WithParamInterface<Way> {};

TEST_P(SheetTest, opens_closes_and_gives_the_focus_back) {
  const auto& way = GetParam();
  const auto open = [&] {
    stage.focusOn(way.control);
    stage.press(Qt::Key_Return);
    ASSERT_TRUE(stage.shows(way.shows));
  };
  open();
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(stage.shows(way.shows));
  EXPECT_EQ(stage.focusedName(), way.control);
  EXPECT_EQ(stage.application.screenNames().back(), "DeviceListView");

  open();
  stage.tabTo(way.closing);
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(stage.shows(way.shows));
  EXPECT_EQ(stage.focusedName(), way.control);

  open();
  stage.click(way.closing);
  EXPECT_FALSE(stage.shows(way.shows));
  EXPECT_TRUE(stage.shows("My Family"));
}

INSTANTIATE_TEST_SUITE_P(Sheets, SheetTest,
                         testing::Values(Way{"Add Another Child", "Child Information", "Cancel"},
                                         Way{"Home Network", "Console DNS Setup", "Done"},
                                         Way{"Mia", "Internet Controls", "Done"},
                                         Way{"Add Device", "Game Console or Smart TV", "Cancel"}));

class MenuSheetTest : public ParentDashboard, public testing::WithParamInterface<Way> {};

TEST_P(MenuSheetTest, opens_closes_and_gives_the_focus_back) {
  const auto& way = GetParam();
  stage.focusOn("AM");
  stage.press(Qt::Key_Return);
  while (stage.focusedName() != way.control) {
    const auto before = stage.focusedName();
    stage.press(Qt::Key_Down);
    ASSERT_NE(stage.focusedName(), before);
  }
  stage.press(Qt::Key_Return);
  ASSERT_TRUE(stage.shows(way.shows));
  stage.tabTo(way.closing);
  stage.press(Qt::Key_Space);
  EXPECT_FALSE(stage.shows(way.shows));
  EXPECT_EQ(stage.focusedName(), "AM");
}

INSTANTIATE_TEST_SUITE_P(Sheets, MenuSheetTest,
                         testing::Values(Way{"Settings", "Appearance", "Done"},
                                         Way{"Family Members", "The Wells Family", "Done"}));

TEST_F(ParentDashboard, the_way_to_a_new_device_goes_down_and_up_again) {
  for (const auto* const choice : {"Phone or Tablet", "Game Console or Smart TV"}) {
    stage.focusOn("Mia");
    stage.press(Qt::Key_Tab);
    stage.press(Qt::Key_Return);
    stage.focusOn(choice);
    stage.press(Qt::Key_Return);
    EXPECT_EQ(stage.application.screenNames().size(), 3U) << choice;
    stage.press(Qt::Key_Escape);
    EXPECT_EQ(stage.focusedName(), choice);
    stage.press(Qt::Key_Escape);
    EXPECT_EQ(stage.focusedName(), "Add Device");
    EXPECT_FALSE(screen().showAddDevice());
  }
}

}  // namespace
}  // namespace quillmar::ui
