#include <gtest/gtest.h>

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>

#include "identity/auth_state.h"
#include "testing/ui/parent_stage.h"

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
    return around(stage.control("Theo, 1 device, 0 online"), "QQuickFlickable")
        ->property("contentY")
        .toDouble();
  }
};

TEST_F(ParentDashboard, the_menu_works_by_keyboard) {
  stage.focusOn("Menu");
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
  EXPECT_EQ(stage.focusedName(), "Menu");
}

TEST_F(ParentDashboard, the_keys_that_close_a_window_work_during_an_open_alert) {
  screen().logout();
  stage.settle();
  ASSERT_TRUE(screen().logoutConfirmation.isShown());
  ASSERT_TRUE(stage.window().isVisible());
  stage.press(Qt::Key_W, Qt::ControlModifier);
  EXPECT_FALSE(stage.window().isVisible());
}

TEST_F(ParentDashboard, escape_closes_the_menu_without_an_action) {
  stage.focusOn("Menu");
  stage.press(Qt::Key_Space);
  ASSERT_TRUE(isMenuOpen());
  stage.press(Qt::Key_Down);
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(isMenuOpen());
  EXPECT_FALSE(screen().showSettings());
  EXPECT_EQ(stage.focusedName(), "Menu");
}

TEST_F(ParentDashboard, the_menu_works_by_mouse_and_a_click_beside_it_closes_it) {
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

TEST_F(ParentDashboard, the_menu_works_by_touch) {
  stage.tap(middleOf(*stage.control("Menu")));
  ASSERT_TRUE(isMenuOpen());
  stage.tap(middleOf(*stage.find("Logout")));
  EXPECT_TRUE(screen().logoutConfirmation.isShown());
}

TEST_F(ParentDashboard, the_logout_asks_first_and_return_does_not_confirm_it) {
  stage.click("AM");
  stage.click("Logout");
  ASSERT_TRUE(stage.shows("Are you sure you want to logout?"));
  EXPECT_EQ(stage.focusedName(), "Cancel");
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(stage.shows("Are you sure you want to logout?"));
  EXPECT_EQ(stage.focusedName(), "Menu");
  EXPECT_TRUE(stage.application.environment().authState()->isLoggedIn());

  screen().logout();
  stage.settle();
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "Logout");
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(stage.application.environment().authState()->isLoggedIn());
  EXPECT_TRUE(stage.shows("Sign In"));
}

TEST_F(ParentDashboard, a_card_opens_its_child_by_click_key_and_touch) {
  stage.click("Mia");
  ASSERT_TRUE(screen().showChildDetail());
  EXPECT_EQ(screen().selectedChild()->id, "c1");
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(screen().showChildDetail());
  EXPECT_EQ(stage.focusedName(), "Mia, 5 devices, 2 online");

  for (const auto key : {Qt::Key_Return, Qt::Key_Space}) {
    stage.focusOn("Theo, 1 device, 0 online");
    stage.press(key);
    ASSERT_TRUE(screen().showChildDetail());
    EXPECT_EQ(screen().selectedChild()->id, "c2");
    stage.press(Qt::Key_Escape);
  }
  stage.focusOn("Mia, 5 devices, 2 online");
  stage.tap(middleOf(*stage.find("Mia")));
  EXPECT_TRUE(screen().showChildDetail());
}

TEST_F(ParentDashboard, the_button_in_a_card_does_not_open_the_card) {
  const auto addDevice = [this](const std::function<void()>& act) {
    stage.focusOn("Mia, 5 devices, 2 online");
    act();
    EXPECT_TRUE(screen().showAddDevice());
    EXPECT_FALSE(screen().showChildDetail());
    EXPECT_EQ(screen().childForNewDevice()->id, "c1");
    stage.press(Qt::Key_Escape);
    EXPECT_FALSE(screen().showAddDevice());
    EXPECT_FALSE(screen().showChildDetail());
  };
  const auto button = [this] {
    auto* const card = stage.control("Mia, 5 devices, 2 online");
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

TEST_F(ParentDashboard, a_silent_refresh_keeps_the_rows_the_focus_and_the_scroll_position) {
  stage.window().resize(390, 600);
  stage.settle();
  stage.focusOn("Theo, 1 device, 0 online");
  stage.press(Qt::Key_Tab);
  ASSERT_EQ(stage.focusedName(), "Add Device");
  const QPointer<QQuickItem> card = stage.control("Theo, 1 device, 0 online");
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
  EXPECT_EQ(stage.control("Theo, 1 device, 0 online"), card);
  EXPECT_EQ(stage.focused(), focused);
  EXPECT_EQ(scrolledBy(), place);
}

TEST_F(ParentDashboard, a_child_added_at_the_top_leaves_the_other_rows_unchanged) {
  stage.focusOn("Theo, 1 device, 0 online");
  const QPointer<QQuickItem> card = stage.control("Theo, 1 device, 0 online");
  std::string more = familyJson();
  more.insert(more.find("[") + 1, childJson("c0", "Noor", "") + ",");
  answerFamily(stage, more);
  stage.advance(30s);
  EXPECT_TRUE(stage.shows("Noor"));
  EXPECT_EQ(stage.control("Theo, 1 device, 0 online"), card);
  EXPECT_EQ(stage.focusedName(), "Theo, 1 device, 0 online");
}

TEST_F(ParentDashboard, add_device_is_above_the_devices_of_a_card) {
  const auto* const card = stage.control("Mia, 5 devices, 2 online");
  double button = 0;
  forEachShown(*card, [&](const QQuickItem& item) {
    if (item.activeFocusOnTab() && accessibleName(item) == "Add Device") {
      button = item.mapToItem(card, {0, 0}).y();
    }
  });
  EXPECT_GT(button, stage.find("2 online")->mapToItem(card, {0, 0}).y());
  EXPECT_LT(button, stage.find("Mia's phone")->mapToItem(card, {0, 0}).y());
}

TEST_F(ParentDashboard, keeps_updating_how_long_ago_it_was_refreshed) {
  http().hold();
  stage.advance(3s);
  EXPECT_TRUE(stage.shows("Updated 3 sec. ago"));
  stage.application.app().setScenePhase(ScenePhase::background);
  stage.advance(8h);
  stage.application.app().setScenePhase(ScenePhase::active);
  stage.settle();
  EXPECT_TRUE(stage.shows("Updated 8 hr. ago"));
}

// A reload leaves the existing cards unchanged; if it takes long, it dims them a little.

struct Reload : ParentDashboard {
  Reload() {
    http().hold();
    stage.click("Refresh");
  }
  // The card of a child, hidden, fading or visible; null if there is none.
  QQuickItem* card(const QString& child) { return search(*stage.window().contentItem(), child); }
  static QQuickItem* search(QQuickItem& in, const QString& child) {
    if (isButton(in) && in.property("text") == child) {
      return &in;
    }
    for (auto* const item : in.childItems()) {
      if (auto* const found = search(*item, child)) {
        return found;
      }
    }
    return nullptr;
  }
  // The opacity of the card including its ancestors.
  double opacity(const QString& child) {
    double opacity = 1;
    for (const auto* item = card(child); item; item = item->parentItem()) {
      opacity *= item->opacity();
    }
    return opacity;
  }
  double place(const QString& child) {
    const auto* const item = card(child);
    return item ? item->mapToScene({0, 0}).y() : std::nan("");
  }
  double turn() {
    double turn = 0;
    forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
      if (item.property("name") == "arrow.clockwise") {
        turn = std::max(turn, item.rotation());
      }
    });
    return turn;
  }
  void answer(const std::string& body) {
    answerFamily(stage, body);
    http().releaseAll();
  }
};

TEST_F(Reload, changes_nothing_at_once) {
  EXPECT_EQ(opacity("Mia"), 1);
  EXPECT_EQ(turn(), 0);
}

TEST_F(Reload, if_it_takes_long_dims_the_cards_a_little_and_turns_the_symbol) {
  stage.application.advance(300ms);
  stage.step(0ms);
  stage.step(100ms);
  EXPECT_LT(opacity("Mia"), 1);
  EXPECT_GT(turn(), 0);
  stage.settle();
  EXPECT_EQ(opacity("Mia"), 0.7);
  EXPECT_EQ(opacity("Ida"), 0.7);
  http().releaseAll();
  stage.settle();
  EXPECT_EQ(opacity("Mia"), 1);
  EXPECT_EQ(turn(), 0);
}

TEST_F(Reload, animates_only_the_new_cards) {
  const QPointer<QQuickItem> mia = card("Mia");
  std::string more = familyJson();
  more.insert(more.find("[") + 1, childJson("c0", "Noor", "") + ",");
  answer(more);
  stage.step(0ms);
  EXPECT_EQ(opacity("Noor"), 0);
  stage.step(150ms);
  EXPECT_EQ(card("Mia"), mia);
  EXPECT_EQ(opacity("Mia"), 1);
  EXPECT_GT(opacity("Noor"), 0);
  EXPECT_LT(opacity("Noor"), 1);
  stage.step(150ms);
  EXPECT_EQ(opacity("Noor"), 1);
}

struct SilentRefresh : Reload {
  SilentRefresh() {
    http().releaseAll();
    stage.settle();
  }
};

TEST_F(SilentRefresh, replaces_cards_within_two_tenths_of_a_second) {
  const double from = place("Mia");
  const double gone = place("Ida");
  // Noor is added above Mia, Ida is removed.
  answerFamily(stage, R"({"children":[)" + childJson("c0", "Noor", "") + "," + miaJson() + "," +
                          childJson("c2", "Theo", deviceJson("d6", "Theo's tablet", "ipad", false)) + "]}");
  stage.application.advance(30s);
  stage.step(0ms);
  EXPECT_EQ(opacity("Noor"), 0);
  EXPECT_EQ(opacity("Ida"), 1);
  EXPECT_EQ(place("Mia"), from);
  stage.step(100ms);
  EXPECT_NEAR(opacity("Noor"), 0.5, 0.01);
  EXPECT_NEAR(opacity("Ida"), 0.5, 0.01);
  EXPECT_EQ(place("Ida"), gone) << "what goes stays where it was";
  const double half = place("Mia");
  EXPECT_GT(half, from);
  stage.step(100ms);
  EXPECT_EQ(opacity("Noor"), 1);
  EXPECT_NEAR(place("Mia") - from, 2 * (half - from), 0.1);
  stage.settle();
  EXPECT_FALSE(stage.shows("Ida"));
  EXPECT_EQ(place("Noor"), from);
}

TEST_F(SilentRefresh, does_not_animate_the_cards_while_the_window_is_resized) {
  stage.window().resize(820, 844);
  stage.step(0ms);
  const double place = this->place("Ida");
  stage.settle();
  EXPECT_EQ(this->place("Ida"), place);
}

TEST_F(ParentDashboard, a_failed_refresh_keeps_the_content_and_a_failed_load_removes_it) {
  http().answerAlways("GET", "/children", 500, "");
  stage.advance(30s);
  EXPECT_TRUE(stage.shows("Theo"));
  stage.click("Refresh");
  EXPECT_FALSE(stage.shows("Theo"));
  EXPECT_TRUE(stage.shows("Welcome to Quillmar"));
}

TEST(ParentDashboardStart, shows_loading_then_empty_then_a_list) {
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

TEST(ParentDashboardStart, an_empty_family_starts_with_its_first_child) {
  UiStage stage({.stored = signedInParent()});
  stage.press(Qt::Key_Tab);
  stage.tabTo("Add Your First Child");
  stage.press(Qt::Key_Return);
  EXPECT_TRUE(dashboard(stage).showAddChild());
  EXPECT_EQ(stage.focusedName(), "Name");
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(stage.focusedName(), "Add Your First Child");
}

// The control that opens a sheet, a text that identifies the sheet, and the control that closes it.
struct Way {
  const char* control;
  const char* shows;
  const char* closing;
};
void PrintTo(const Way& way, std::ostream* out) { *out << way.control; }

class SheetTest : public ParentDashboard, public testing::WithParamInterface<Way> {};

TEST_P(SheetTest, opens_closes_and_returns_the_focus) {
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
                                         Way{"Mia, 5 devices, 2 online", "Internet Controls", "Done"},
                                         Way{"Add Device", "Game Console or Smart TV", "Cancel"}));

class MenuSheetTest : public ParentDashboard, public testing::WithParamInterface<Way> {};

TEST_P(MenuSheetTest, opens_closes_and_returns_the_focus) {
  const auto& way = GetParam();
  stage.focusOn("Menu");
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
  EXPECT_EQ(stage.focusedName(), "Menu");
}

INSTANTIATE_TEST_SUITE_P(Sheets, MenuSheetTest,
                         testing::Values(Way{"Settings", "Appearance", "Done"},
                                         Way{"Family Members", "The Wells Family", "Done"}));

TEST_F(ParentDashboard, the_sheets_for_a_new_device_open_and_close_in_order) {
  for (const auto* const choice : {"Phone or Tablet", "Game Console or Smart TV"}) {
    stage.focusOn("Mia, 5 devices, 2 online");
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
