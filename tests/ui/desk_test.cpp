#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "testing/ui/parent_stage.h"

// The window of a parent from 900 points on: the dashboard at the left, what it opens at the right.
namespace quillmar::ui {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;
using Pointer = UiStage::Pointer;

constexpr QSize phone{390, 844};
constexpr QSize tablet{820, 1180};
constexpr QSize desk{1000, 800};
constexpr QSize wideDesk{1400, 900};
constexpr auto miasCard = "Mia, 5 devices, 2 online";
constexpr auto theosCard = "Theo, 1 device, 0 online";
constexpr auto newSite = "Add allowed site (e.g., example.com)";
constexpr auto restingText = "Choose a child";

struct DeskTest : testing::Test {
  explicit DeskTest(QSize size = desk) : stage({.stored = signedInParent(), .size = size}) {
    showFamily(stage);
    http().answerAlways("GET", "/children/c2", 200,
                        childJson("c2", "Theo", deviceJson("d6", "Theo's tablet", "ipad", false)));
    http().answerAlways("GET", "/family", 200, parentsJson(stage.application.machine.dispatch.now()));
    http().answerAlways("GET", "/home-network", 200, homeNetworkJson("203.0.113.7", true));
    http().forgetRequests();
  }

  UiStage stage;

  ScriptedHttpSession& http() { return stage.application.machine.http; }
  Names screens() { return stage.application.screenNames(); }
  void resize(QSize size) {
    stage.window().resize(size);
    stage.settle();
    stage.settle();
  }
  // Activated by the Return key.
  void open(const QString& name) {
    stage.focusOn(name);
    stage.press(Qt::Key_Return);
  }
  // The place in the window; empty if it is not shown.
  QRectF placeOf(const QString& text) {
    const auto* const item = stage.find(text);
    return item ? item->mapRectToScene({0, 0, item->width(), item->height()}) : QRectF();
  }
  QQuickItem* flickableAround(const QString& control) {
    return around(stage.control(control), "QQuickFlickable");
  }
  bool isInPopup(const QString& text) { return around(stage.find(text), "QQuickPopupItem") != nullptr; }
  // Whether the page of this text stands beside the dashboard.
  bool isBeside(const QString& text) {
    return stage.shows(text) && !isInPopup(text) && placeOf(text).left() > placeOf("My Family").right();
  }
};

TEST_F(DeskTest, opens_nothing_by_itself) {
  EXPECT_TRUE(isBeside(restingText));
  stage.advance(29s);
  EXPECT_EQ(http().calls(), Names());
  EXPECT_EQ(screens(), Names{"DeviceListView"});
}

TEST_F(DeskTest, at_rest_offers_what_the_menu_of_the_dashboard_has) {
  const std::pair<const char*, const char*> ways[] = {{"Family Members", "FamilyMembersView"},
                                                      {"Settings", "SettingsView"}};
  for (const auto& [row, screen] : ways) {
    stage.click(row);
    EXPECT_EQ(screens(), (Names{"DeviceListView", screen}));
    EXPECT_FALSE(stage.shows(restingText));
    stage.click("Done");
    EXPECT_EQ(screens(), Names{"DeviceListView"});
    EXPECT_TRUE(stage.shows(restingText));
  }
}

TEST_F(DeskTest, at_rest_speaks_of_no_child_before_there_is_one) {
  http().answerAlways("GET", "/children", 200, R"({"children":[],"unassigned_devices":[]})");
  dashboard(stage).loadChildren();
  stage.settle();
  EXPECT_FALSE(stage.shows(restingText));
  EXPECT_TRUE(isBeside("Family Members"));
}

TEST_F(DeskTest, shows_a_page_beside_the_dashboard_which_stays_in_use) {
  stage.click("Mia");
  EXPECT_TRUE(isBeside("Internet Controls"));
  EXPECT_TRUE(stage.shows("My Family"));
  stage.click("Theo");
  EXPECT_EQ(stage.application.screen<ChildDetailView>().name(), "Theo");
  EXPECT_EQ(screens(), (Names{"DeviceListView", "ChildDetailView"}));
  stage.click("Home Network");
  EXPECT_TRUE(isBeside("Done"));
  EXPECT_EQ(screens(), (Names{"DeviceListView", "HomeNetworkView"}));
}

TEST_F(DeskTest, marks_the_card_of_the_page_beside_it) {
  const auto isMarked = [this](const char* card) { return stage.control(card)->property("chosen").toBool(); };
  EXPECT_FALSE(isMarked(miasCard));
  open(theosCard);
  EXPECT_TRUE(isMarked(theosCard));
  EXPECT_FALSE(isMarked(miasCard));
  open(miasCard);
  EXPECT_FALSE(isMarked(theosCard));
  EXPECT_TRUE(isMarked(miasCard));
  resize(tablet);
  EXPECT_FALSE(isMarked(miasCard)) << "the page covers the card";
}

TEST_F(DeskTest, leads_the_tab_key_through_the_dashboard_and_the_page) {
  open(miasCard);
  EXPECT_EQ(stage.focusedName(), "Real-Time");
  stage.tabTo(theosCard);
  stage.tabTo("Delete Child Profile");
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "Menu") << "the page is followed by the dashboard's bar";
}

TEST_F(DeskTest, closes_a_page_by_escape_or_its_button_and_returns_the_focus) {
  for (const bool byKey : {true, false}) {
    open(theosCard);
    byKey ? stage.press(Qt::Key_Escape) : stage.click("Done");
    EXPECT_EQ(screens(), Names{"DeviceListView"});
    EXPECT_EQ(stage.focusedName(), theosCard);
    EXPECT_TRUE(isBeside(restingText));
  }
}

TEST_F(DeskTest, sends_nothing_for_a_page_that_closes) {
  stage.click("Theo");
  http().forgetRequests();
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(http().calls(), Names());
}

TEST_F(DeskTest, lays_the_sheets_of_a_page_over_the_page) {
  open(miasCard);
  stage.click("Link Device");
  const auto* const sheet = around(stage.find("Link Existing Device"), "QQuickPopupItem");
  ASSERT_NE(sheet, nullptr);
  const double pane =
      around(stage.control("Delete Child Profile"), "QQuickFlickable")->mapToScene({0, 0}).x();
  EXPECT_NEAR(sheet->x() + sheet->width() / 2, (pane + desk.width()) / 2, 2);
  EXPECT_GT(sheet->x(), pane);
  EXPECT_LT(sheet->x() + sheet->width(), desk.width());
  stage.press(Qt::Key_Escape);
  EXPECT_TRUE(isBeside("Internet Controls")) << "Escape closed the page under the sheet too";
}

TEST_F(DeskTest, lays_the_sheets_of_the_dashboard_over_the_window) {
  open(miasCard);
  open("Add Another Child");
  const auto* const sheet = around(stage.find("Child Information"), "QQuickPopupItem");
  ASSERT_NE(sheet, nullptr);
  EXPECT_NEAR(sheet->x() + sheet->width() / 2, desk.width() / 2, 1);
  stage.press(Qt::Key_Escape);
  EXPECT_TRUE(isBeside("Internet Controls"));
}

TEST_F(DeskTest, stays_beside_down_to_900_points) {
  open(miasCard);
  resize({900, 800});
  EXPECT_TRUE(isBeside("Internet Controls"));
  resize({899, 800});
  EXPECT_TRUE(isInPopup("Internet Controls"));
  resize({900, 800});
  EXPECT_TRUE(isBeside("Internet Controls"));
}

TEST_F(DeskTest, ends_with_the_session) {
  open(miasCard);
  dashboard(stage).logout();
  stage.settle();
  stage.click("Logout");
  EXPECT_EQ(screens(), Names{"LoginView"});
  EXPECT_FALSE(stage.shows("Internet Controls"));
}

// Constructed before the stage, and undone after it.
struct RightToLeft {
  RightToLeft() { QGuiApplication::setLayoutDirection(Qt::RightToLeft); }
  ~RightToLeft() { QGuiApplication::setLayoutDirection(Qt::LeftToRight); }
};
struct MirroredDeskTest : RightToLeft, DeskTest {
  MirroredDeskTest() : DeskTest(wideDesk) {}
};

TEST_F(MirroredDeskTest, has_the_dashboard_at_the_right_and_the_activity_at_the_left) {
  open(miasCard);
  EXPECT_LT(placeOf("Devices").right(), placeOf("My Family").left());
  EXPECT_LT(placeOf("Recent Activity").right(), placeOf("Devices").left());
  open("Edit name");
  const auto* const sheet = around(stage.find("Child Name"), "QQuickPopupItem");
  EXPECT_GT(sheet->x(), 0);
  EXPECT_LT(sheet->x() + sheet->width(), placeOf("My Family").left());
}

// A sheet over a tablet's window.
struct SheetHeightTest : DeskTest {
  SheetHeightTest() : DeskTest(tablet) {}

  QQuickItem* sheetOf(const QString& text) { return around(stage.find(text), "QQuickPopupItem"); }
  // The height of the content that does not fit into the sheet.
  double hidden(const QString& control) {
    const auto* const flickable = flickableAround(control);
    return flickable->property("contentHeight").toDouble() - flickable->height();
  }
};

TEST_F(SheetHeightTest, is_that_of_the_content_and_the_sheet_is_centred) {
  open(miasCard);
  open("Edit name");
  const auto* const sheet = sheetOf("Child Name");
  EXPECT_LT(sheet->height(), 260);
  EXPECT_GT(sheet->height(), placeOf("Child Name").bottom() - sheet->y() + 44) << "the field has no room";
  EXPECT_NEAR(sheet->y() + sheet->height() / 2, tablet.height() / 2, 1);
  EXPECT_EQ(hidden("Name"), 0);
}

TEST_F(SheetHeightTest, follows_the_content) {
  http().hold("GET", "/home-network");
  open("Home Network");
  const double before = sheetOf("Home Network")->height();
  http().releaseAll();
  stage.settle();
  EXPECT_GT(sheetOf("Home Network")->height(), before);
  EXPECT_EQ(hidden("Update Home Network IP"), 0);
}

TEST_F(SheetHeightTest, leaves_the_window_an_edge_and_lets_the_content_scroll) {
  open(miasCard);
  resize({820, 500});
  const auto* const sheet = sheetOf("Internet Controls");
  EXPECT_EQ(sheet->height(), 420);
  EXPECT_GT(hidden("Tablet"), 0);
}

// The window that is too narrow for two panes.
class CrossingTest : public DeskTest, public testing::WithParamInterface<QSize> {
 protected:
  void expectPage() {
    EXPECT_EQ(screens(), (Names{"DeviceListView", "ChildDetailView"}));
    EXPECT_TRUE(stage.shows("Internet Controls"));
  }
};

TEST_P(CrossingTest, keeps_the_page_its_text_its_focus_and_its_place) {
  open(miasCard);
  const auto model = stage.application.find<ChildDetailView>();
  stage.focusOn(newSite);
  stage.type("school.exa");
  const QPointer<QQuickItem> box = stage.focused();
  const QPointer<QQuickItem> flickable = flickableAround(newSite);
  ASSERT_GT(flickable->property("contentY").toDouble(), 0);
  http().forgetRequests();
  for (const QSize size : {GetParam(), desk, GetParam(), wideDesk}) {
    resize(size);
    SCOPED_TRACE(size.width());
    ASSERT_FALSE(box.isNull());
    EXPECT_EQ(stage.application.find<ChildDetailView>(), model);
    EXPECT_EQ(stage.focused(), box);
    EXPECT_EQ(box->property("text"), "school.exa");
    EXPECT_EQ(flickableAround(newSite), flickable);
    EXPECT_TRUE(stage.window().contentItem()->boundingRect().contains(middleOf(*box)));
    EXPECT_EQ(isInPopup("Internet Controls"), size == GetParam());
  }
  stage.type("mple");
  EXPECT_EQ(model->policySection.newDomain(), "school.example");
  EXPECT_EQ(http().calls(), Names()) << "a resize sends nothing";
}

TEST_P(CrossingTest, keeps_the_place_in_a_page_without_focus) {
  open(miasCard);
  const QPointer<QQuickItem> flickable = flickableAround("Real-Time");
  for (const QSize size : {GetParam(), desk}) {
    flickable->setProperty("contentY", 250);
    stage.settle();
    resize(size);
    EXPECT_EQ(flickable->property("contentY"), 250) << size.width();
  }
}

TEST_P(CrossingTest, gives_a_page_that_covers_the_dashboard_the_focus) {
  open(miasCard);
  stage.focusOn(theosCard);
  resize(GetParam());
  EXPECT_TRUE(around(stage.focused(), "QQuickPopupItem") != nullptr);
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(screens(), Names{"DeviceListView"});
  EXPECT_EQ(stage.focusedName(), theosCard);
}

TEST_P(CrossingTest, leaves_the_focus_in_the_dashboard_that_is_uncovered) {
  resize(GetParam());
  stage.focusOn(miasCard);
  resize(desk);
  EXPECT_EQ(stage.focusedName(), miasCard);
  resize(GetParam());
  EXPECT_EQ(stage.focusedName(), miasCard);
}

TEST_P(CrossingTest, keeps_a_sheet_over_the_page) {
  open(miasCard);
  open("Edit name");
  const QPointer<QQuickItem> box = stage.focused();
  for (const QSize size : {GetParam(), desk, GetParam()}) {
    resize(size);
    SCOPED_TRACE(size.width());
    ASSERT_TRUE(stage.shows("Child Name"));
    EXPECT_EQ(stage.focused(), box);
  }
  stage.clickAt(middleOf(*stage.find("Cancel")));
  EXPECT_FALSE(stage.shows("Child Name")) << "the page covers its sheet";
  expectPage();
}

TEST_P(CrossingTest, keeps_a_question_over_the_page) {
  open(miasCard);
  open("Delete Child Profile");
  for (const QSize size : {GetParam(), desk, GetParam()}) {
    resize(size);
    SCOPED_TRACE(size.width());
    ASSERT_TRUE(stage.shows("Delete Mia?"));
    EXPECT_EQ(stage.focusedName(), "Cancel");
  }
  stage.clickAt(middleOf(*stage.find("Cancel")));
  EXPECT_FALSE(stage.shows("Delete Mia?")) << "the page covers its question";
  EXPECT_EQ(stage.focusedName(), "Delete Child Profile");
  expectPage();
}

TEST_P(CrossingTest, keeps_a_question_of_the_dashboard_over_the_page) {
  open(miasCard);
  dashboard(stage).logout();
  stage.settle();
  resize(GetParam());
  stage.clickAt(middleOf(*stage.find("Cancel")));
  EXPECT_FALSE(dashboard(stage).logoutConfirmation.isShown());
  expectPage();
}

TEST_P(CrossingTest, with_an_open_menu_leaves_everything_in_use) {
  open(miasCard);
  stage.focusOn("Tablet");
  stage.press(Qt::Key_Menu);
  ASSERT_TRUE(isInPopup("Unlink"));
  resize(GetParam());
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(stage.focusedName(), "Tablet");
  expectPage();
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(screens(), Names{"DeviceListView"});
}

TEST_P(CrossingTest, while_a_page_slides_in_puts_it_into_its_place) {
  resize(GetParam());
  stage.focusOn(miasCard);
  dashboard(stage).cards[0].tap();
  stage.step(100ms);
  stage.step(100ms);
  stage.window().resize(desk);
  stage.step(50ms);
  stage.settle();
  EXPECT_TRUE(isBeside("Internet Controls"));
  stage.click("Theo");
  EXPECT_EQ(stage.application.screen<ChildDetailView>().name(), "Theo");
}

TEST_P(CrossingTest, while_a_page_slides_out_leaves_nothing_of_it) {
  resize(GetParam());
  open(miasCard);
  dashboard(stage).showChildDetail = false;
  stage.step(100ms);
  stage.step(100ms);
  resize(desk);
  EXPECT_FALSE(stage.shows("Internet Controls"));
  EXPECT_TRUE(isBeside(restingText));
  stage.click("Theo");
  EXPECT_TRUE(isBeside("Internet Controls"));
}

TEST_P(CrossingTest, while_one_page_fades_into_another_shows_the_other) {
  open(miasCard);
  dashboard(stage).cards[1].tap();
  stage.step(100ms);
  resize(GetParam());
  EXPECT_TRUE(isInPopup("Theo's tablet"));
  EXPECT_FALSE(stage.shows("Mia's phone") && isInPopup("Mia's phone"));
}

TEST_P(CrossingTest, during_a_drag_leaves_the_row_in_use) {
  open(miasCard);
  stage.advance(2s);
  const auto offset = [this] {
    return stage.application.screen<ChildDetailView>().devicesSection.deviceRows[1].offset();
  };
  http().forgetRequests();
  for (const auto pointer : {Pointer::mouse, Pointer::finger}) {
    stage.drag(pointer, middleOf(*stage.control("Tablet")), {-60, 0}, UiStage::Ending::holdOn);
    ASSERT_EQ(offset(), -60);
    resize(GetParam());
    stage.letGo(pointer, middleOf(*stage.control("Tablet")));
    EXPECT_TRUE(offset() == 0 || offset() == -80) << "the row stuck at " << offset();
    expectPage();
    stage.drag(pointer, middleOf(*stage.control("Tablet")) - QPoint(70, 0), {120, 0});
    EXPECT_EQ(offset(), 0);
    resize(desk);
    stage.drag(pointer, middleOf(*stage.control("Tablet")) + QPoint(70, 0), {-100, 0});
    EXPECT_EQ(offset(), -80);
    stage.drag(pointer, middleOf(*stage.control("Tablet")) - QPoint(70, 0), {120, 0});
    EXPECT_EQ(offset(), 0);
  }
  for (const auto& call : http().calls()) {
    EXPECT_TRUE(call.starts_with("GET ")) << call;
  }
}

TEST_P(CrossingTest, during_a_request_neither_repeats_nor_loses_it) {
  open(miasCard);
  stage.focusOn(newSite);
  stage.type("new.example");
  http().forgetRequests();
  http().answerAlways("POST", "/children/c1/policy/allow", 500, R"({"error":"Not today"})");
  http().hold("POST", "/children/c1/policy/allow");
  stage.application.screen<ChildDetailView>().policySection.addAllowedSite();
  stage.settle();
  for (const QSize size : {GetParam(), wideDesk, GetParam()}) {
    resize(size);
  }
  EXPECT_EQ(http().calls(), Names{"POST /children/c1/policy/allow"});
  http().releaseAll();
  stage.settle();
  EXPECT_TRUE(stage.shows("Not today"));
}

TEST_P(CrossingTest, many_times_leaves_one_page) {
  open(miasCard);
  for (int i = 0; i < 10; ++i) {
    stage.window().resize(i % 2 == 0 ? GetParam() : wideDesk);
    stage.step(16ms);
  }
  stage.settle();
  EXPECT_TRUE(isBeside("Internet Controls"));
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(screens(), Names{"DeviceListView"});
  EXPECT_FALSE(stage.shows("Internet Controls"));
}

INSTANTIATE_TEST_SUITE_P(Sizes, CrossingTest, testing::Values(phone, tablet),
                         [](const auto& size) { return size.param == phone ? "phone" : "tablet"; });

// A window that is wide enough for two columns on the page.
struct ColumnsTest : DeskTest {
  ColumnsTest() : DeskTest(wideDesk) { open(miasCard); }

  bool areSideBySide() { return placeOf("Real-Time").left() > placeOf("Devices").right(); }
};

TEST_F(ColumnsTest, stand_side_by_side_from_1200_points) {
  for (const int width : {1200, 1920}) {
    resize({width, 900});
    EXPECT_TRUE(areSideBySide()) << width;
    EXPECT_LT(std::abs(placeOf("Real-Time").top() - placeOf("Devices").top()), 60) << width;
  }
  resize({1199, 900});
  EXPECT_FALSE(areSideBySide());
  EXPECT_LT(placeOf("Real-Time").bottom(), placeOf("Devices").top());
  EXPECT_LT(placeOf("Devices").top(), placeOf("Recent Activity").top());
  EXPECT_LT(placeOf("Recent Activity").top(), placeOf("Blocked Sites").top());
}

TEST_F(ColumnsTest, keep_the_controls_whatever_the_tab) {
  for (const char* const tab : {"Sites Blocked", "Sites Allowed"}) {
    stage.click(tab);
    EXPECT_TRUE(stage.shows("Internet Controls")) << tab;
    EXPECT_TRUE(stage.shows("Delete Child Profile")) << tab;
    EXPECT_FALSE(stage.shows("Recent Activity")) << tab;
  }
  resize(desk);
  EXPECT_FALSE(stage.shows("Internet Controls"));
  EXPECT_TRUE(stage.shows("Sites Visited"));
  resize(wideDesk);
  EXPECT_TRUE(stage.shows("Internet Controls"));
}

TEST_F(ColumnsTest, are_read_one_after_the_other) {
  const auto follows = [this](const QString& from, const QString& to) {
    stage.focusOn(from);
    stage.press(Qt::Key_Tab);
    EXPECT_EQ(stage.focusedName(), to);
  };
  follows("Done", "Mia's phone");
  follows("Delete Child Profile", "Real-Time");
  resize(desk);
  follows("Done", "Real-Time");
  resize(wideDesk);
  follows("Done", "Mia's phone");
}

TEST_F(ColumnsTest, keep_the_focus_when_they_become_one) {
  for (const char* const name : {newSite, "Tablet", "Real-Time", "games.example"}) {
    stage.advance(2s);
    stage.focusOn(name);
    for (const QSize size : {desk, wideDesk, phone, wideDesk}) {
      resize(size);
      EXPECT_EQ(stage.focusedName(), name) << size.width();
    }
  }
}

TEST_F(ColumnsTest, need_more_room_for_larger_texts) {
  UiStage large({.stored = signedInParent(), .size = wideDesk, .desktop = {.dark = false, .textScale = 1.3}});
  openChild(large);
  const auto left = [&](const char* text) { return large.find(text)->mapToScene({0, 0}).x(); };
  EXPECT_EQ(left("Devices"), left("Recent Activity"));
  large.window().resize(1600, 900);
  large.settle();
  EXPECT_LT(left("Devices"), left("Recent Activity"));
}

TEST_F(ColumnsTest, show_the_count_of_a_section_beside_its_title) {
  for (const QSize size : {wideDesk, desk, wideDesk}) {
    resize(size);
    const auto title = placeOf("Allowed Sites");
    const auto* const badge = stage.find("Allowed Sites")->parentItem();
    for (const auto* const child : badge->childItems()) {
      if (child->isVisible() && child->height() > 0) {
        EXPECT_NEAR(child->mapRectToScene(child->boundingRect()).center().y(), title.center().y(), 2)
            << size.width();
      }
    }
  }
}

TEST_F(ColumnsTest, keep_the_text_box_in_use_in_view) {
  stage.focusOn(newSite);
  for (const QSize size : {desk, wideDesk, phone, wideDesk}) {
    resize(size);
    EXPECT_TRUE(stage.window().contentItem()->boundingRect().contains(middleOf(*stage.focused())))
        << size.width();
  }
}

}  // namespace
}  // namespace quillmar::ui
