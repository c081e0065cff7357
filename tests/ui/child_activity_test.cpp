#include <gtest/gtest.h>

#include <QAccessible>
#include <QGuiApplication>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "testing/ui/parent_stage.h"
#include "ui/items/match_marks_item.h"

namespace quillmar::ui {
namespace {

struct ChildActivityPage : testing::Test {
  explicit ChildActivityPage(QSize size = {820, 1000}) : stage({.stored = signedInParent(), .size = size}) {}
  ~ChildActivityPage() override { QGuiApplication::setLayoutDirection(Qt::LayoutDirectionAuto); }

  void open() {
    openActivity(stage);
    stage.settle();
  }

  UiStage stage;

  ChildActivityView& screen() { return stage.application.screen<ChildActivityView>(); }
  // The bar of a chart or of a site.
  QQuickItem& item(const QString& name) {
    const QQuickItem* found = nullptr;
    forEachShown(*stage.window().contentItem(), [&](const QQuickItem& shown) {
      const bool isBar = shown.property("bar").isValid() || shown.property("thickness").isValid();
      if (isBar && accessibleName(shown) == name) {
        found = &shown;
      }
    });
    if (!found) {
      throw std::logic_error("no bar is called " + name.toStdString());
    }
    return *const_cast<QQuickItem*>(found);
  }
  // The time in the locale's form, with a no-break space.
  static QString hour(const char* text) { return QString::fromUtf8(text).replace("_", "\u202F"); }
  double top(const QString& control) { return stage.control(control)->mapToScene({0, 0}).y(); }
  static QString description(QQuickItem& item) {
    auto* const told = QAccessible::queryAccessibleInterface(&item);
    return told ? told->text(QAccessible::Description) : QString();
  }
};

TEST_F(ChildActivityPage, opens_from_the_childs_page) {
  openChild(stage);
  answerWeek(stage);
  stage.focusOn("See All Activity");
  stage.press(Qt::Key_Return);
  EXPECT_NE(stage.application.find<ChildActivityView>(), nullptr);
  EXPECT_TRUE(stage.shows("Last 7 Days"));
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(stage.application.find<ChildActivityView>(), nullptr);
}

TEST_F(ChildActivityPage, tells_the_name_and_the_number_of_every_bar) {
  open();
  QAccessible::setActive(true);
  for (std::size_t i = 0; i < screen().hourBars.size(); ++i) {
    auto& bar = screen().hourBars[i];
    EXPECT_EQ(description(item(QString::fromStdString(bar.name()))).toStdString(), bar.number());
  }
  for (std::size_t i = 0; i < screen().visitedBars.size(); ++i) {
    auto& bar = screen().visitedBars[i];
    EXPECT_EQ(description(item(QString::fromStdString(bar.name()))).toStdString(), bar.number());
  }
  QAccessible::setActive(false);
}

TEST_F(ChildActivityPage, is_one_stop_of_the_tab_key_for_a_chart_and_arrows_for_its_bars) {
  open();
  stage.tabTo("Sunday, October 2");
  stage.press(Qt::Key_Right);
  EXPECT_EQ(stage.focusedName(), "Monday, October 3");
  stage.press(Qt::Key_End);
  EXPECT_EQ(stage.focusedName(), "Today");
  stage.press(Qt::Key_Left);
  EXPECT_EQ(stage.focusedName(), "Yesterday");
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), hour("12_AM to 1_AM"));
  stage.press(Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_EQ(stage.focusedName(), "Yesterday") << "where the focus was";
}

TEST_F(ChildActivityPage, shows_the_number_of_the_bar_that_has_the_focus) {
  open();
  stage.tabTo(hour("12_AM to 1_AM"));
  for (int i = 0; i < 18; ++i) {
    stage.press(Qt::Key_Right);
  }
  const auto& bar = screen().hourBars[18];
  const QString expected = QString::fromStdString(bar.name() + ": " + bar.number());
  EXPECT_TRUE(stage.shows(expected)) << expected.toStdString();
}

TEST_F(ChildActivityPage, shows_the_number_of_the_bar_under_the_pointer_until_the_focus_moves) {
  open();
  const auto readout = [&](std::size_t hourOfDay) {
    const auto& bar = screen().hourBars[hourOfDay];
    return QString::fromStdString(bar.name() + ": " + bar.number());
  };
  stage.tabTo(hour("12_AM to 1_AM"));
  stage.pointAt(middleOf(item(hour("6_PM to 7_PM"))));
  EXPECT_TRUE(stage.shows(readout(18)));
  stage.press(Qt::Key_Right);
  EXPECT_TRUE(stage.shows(readout(1)));
  EXPECT_FALSE(stage.shows(readout(18)));
}

TEST_F(ChildActivityPage, leads_from_a_bar_to_its_rows_by_key) {
  open();
  stage.tabTo(hour("12_AM to 1_AM"));
  stage.press(Qt::Key_Home);
  for (int i = 0; i < 18; ++i) {
    stage.press(Qt::Key_Right);
  }
  stage.press(Qt::Key_Space);
  EXPECT_TRUE(screen().hourBars[18].isSelected());
  EXPECT_EQ(stage.focusedName(), "Show Whole Day");
  const double y = top("Show Whole Day");
  EXPECT_GT(y, 0);
  EXPECT_LT(y, stage.window().height() / 2.0);
  stage.press(Qt::Key_Space);
  EXPECT_FALSE(screen().hourBars[18].isSelected());
}

TEST_F(ChildActivityPage, leads_from_a_bar_to_its_rows_by_pointer) {
  open();
  auto& bar = item(hour("6_PM to 7_PM"));
  const double before = bar.mapToScene({0, 0}).y();
  stage.clickAt(middleOf(bar));
  EXPECT_TRUE(screen().hourBars[18].isSelected());
  EXPECT_LT(bar.mapToScene({0, 0}).y(), before);
  const double y = top("Show Whole Day");
  EXPECT_GT(y, 0);
  EXPECT_LT(y, stage.window().height() / 2.0);
}

TEST_F(ChildActivityPage, draws_time_from_right_to_left_where_the_language_does) {
  QGuiApplication::setLayoutDirection(Qt::RightToLeft);
  open();
  EXPECT_GT(middleOf(item("Sunday, October 2")).x(), middleOf(item("Today")).x());
  stage.tabTo("Sunday, October 2");
  stage.press(Qt::Key_Left);
  EXPECT_EQ(stage.focusedName(), "Monday, October 3");
}

TEST_F(ChildActivityPage, draws_a_bar_as_high_as_its_number) {
  open();
  const auto heightOf = [&](std::size_t hourOfDay) {
    double height = 0;
    forEachShown(item(QString::fromStdString(screen().hourBars[hourOfDay].name())),
                 [&](const QQuickItem& part) {
                   if (part.property("tint").isValid()) {
                     height += part.height();
                   }
                 });
    return height;
  };
  EXPECT_EQ(heightOf(3), 0);
  const auto& bar = screen().hourBars[18];
  EXPECT_NEAR(heightOf(18), (bar.allowed() + bar.blocked()) * 140, 2);
  EXPECT_GT(heightOf(18), heightOf(7));
}

TEST_F(ChildActivityPage, filters_its_rows_and_allows_one_by_key) {
  open();
  stage.application.machine.http.answerAlways(
      "POST", "/children/c1/policy/allow", 200,
      R"({"id":"p1","child_id":"c1","family_id":"f","is_blocked":false,"block_mode":"blacklist","blocked_domains":[],"allowed_domains":["ads.example"],"created_at":"c","updated_at":"u"})");
  stage.press(Qt::Key_F, Qt::ControlModifier);
  EXPECT_EQ(stage.focusedName(), "Part of the name");
  stage.type("ads");
  ASSERT_EQ(screen().siteRows.size(), 1U);
  EXPECT_TRUE(stage.shows("33 requests"));
  stage.tabTo("ads.example");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(stage.application.machine.http.count("POST", "/children/c1/policy/allow"), 1U);
  EXPECT_TRUE(stage.shows("Now Allowed"));
}

TEST_F(ChildActivityPage, leads_to_the_field_and_lets_it_stand_while_rows_go) {
  open();
  stage.click("Find");
  const double field = top("Part of the name");
  EXPECT_GT(field, 0);
  EXPECT_LT(field, stage.window().height() / 2.0);
  stage.type("ads");
  EXPECT_EQ(top("Part of the name"), field);
  EXPECT_GT(top("ads.example"), field);
  stage.type("x");
  EXPECT_EQ(top("Part of the name"), field);
  EXPECT_TRUE(stage.shows("No match"));
}

TEST_F(ChildActivityPage, marks_what_it_finds) {
  open();
  const auto marks = [&] {
    int found = 0;
    forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
      const auto* const label = qobject_cast<const MatchMarksItem*>(&item);
      found += label ? static_cast<int>(label->marks().size()) : 0;
    });
    return found;
  };
  stage.press(Qt::Key_F, Qt::ControlModifier);
  EXPECT_EQ(marks(), 0);
  stage.type("ADS");
  EXPECT_EQ(marks(), 1);
}

TEST_F(ChildActivityPage, shows_all_rows_again_at_escape_and_closes_at_the_next) {
  open();
  const auto rows = screen().siteRows.size();
  stage.press(Qt::Key_F, Qt::ControlModifier);
  stage.type("ads");
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(screen().siteRows.size(), rows);
  EXPECT_EQ(stage.control("Part of the name"), nullptr);
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(stage.application.find<ChildActivityView>(), nullptr);
}

TEST_F(ChildActivityPage, orders_the_rows_that_are_found_under_the_pointer) {
  open();
  stage.press(Qt::Key_F, Qt::ControlModifier);
  stage.type("ads");
  stage.pointAt(middleOf(*stage.control("ads.example")));
  stage.press(Qt::Key_Backspace);
  stage.press(Qt::Key_Backspace);
  stage.press(Qt::Key_Backspace);
  std::vector<std::pair<double, std::string>> drawn;
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    const bool isCounted = item.property("badge").toString().contains("request");
    if (isCounted && std::string(item.metaObject()->className()).starts_with("SiteRow")) {
      drawn.emplace_back(item.mapToScene({0, 0}).y(), accessibleName(item).toStdString());
    }
  });
  std::ranges::sort(drawn);
  ASSERT_EQ(drawn.size(), screen().siteRows.size());
  for (std::size_t i = 0; i < drawn.size(); ++i) {
    EXPECT_EQ(drawn[i].second, screen().siteRows[i].site()) << i;
  }
}

TEST_F(ChildActivityPage, keeps_its_rows_and_its_field_in_a_window_of_another_width) {
  open();
  const auto model = stage.application.find<ChildActivityView>();
  stage.press(Qt::Key_F, Qt::ControlModifier);
  stage.type("ads");
  const QPointer<QQuickItem> box = stage.focused();
  for (const QSize size :
       {QSize(1280, 800), QSize(390, 844), QSize(1000, 800), QSize(1920, 1080), QSize(820, 1000)}) {
    stage.window().resize(size);
    stage.settle();
    SCOPED_TRACE(size.width());
    EXPECT_EQ(stage.application.find<ChildActivityView>(), model);
    ASSERT_FALSE(box.isNull());
    EXPECT_EQ(stage.focused(), box);
    EXPECT_TRUE(stage.window().contentItem()->boundingRect().contains(middleOf(*box)));
    EXPECT_TRUE(stage.shows("33 requests"));
  }
  stage.press(Qt::Key_Escape);
  EXPECT_GT(screen().siteRows.size(), 1U);
}

TEST_F(ChildActivityPage, has_its_sites_beside_its_charts_from_1200_points) {
  open();
  const auto siteIsBeside = [&] {
    const auto& site = item(QString::fromStdString(screen().visitedBars[0].name()));
    return site.mapToScene({0, 0}).x() > item("Today").mapToScene({0, 0}).x();
  };
  EXPECT_FALSE(siteIsBeside());
  for (const auto& [width, isBeside] : {std::pair(1199, false), {1200, true}, {1920, true}}) {
    stage.window().resize(width, 900);
    stage.settle();
    EXPECT_EQ(siteIsBeside(), isBeside) << width;
  }
}

TEST_F(ChildActivityPage, keeps_the_focus_on_the_button_that_stops_and_goes_on) {
  openChild(stage);
  answerWeek(stage);
  stage.application.machine.http.hold("GET", "/devices/d2/logs");
  stage.application.screen<ChildDetailView>().seeAllActivity();
  stage.settle();
  stage.focusOn("Stop");
  stage.press(Qt::Key_Space);
  EXPECT_EQ(stage.focusedName(), "Go On");
  stage.press(Qt::Key_Space);
  EXPECT_EQ(stage.focusedName(), "Stop");
}

TEST_F(ChildActivityPage, lists_its_keys_and_tells_one_in_a_tooltip) {
  open();
  stage.press(Qt::Key_F1);
  EXPECT_TRUE(stage.shows("Find in the lists"));
  EXPECT_TRUE(stage.shows("Go back"));
  EXPECT_FALSE(stage.shows("Refresh, or try again"));
  stage.press(Qt::Key_F1);
  stage.pointAt(middleOf(*stage.control("Find")));
  stage.advance(std::chrono::seconds(2));
  EXPECT_TRUE(stage.shows("Find (Ctrl+F)"));
}

TEST_F(ChildActivityPage, tries_again_by_its_key) {
  openChild(stage);
  answerWeek(stage);
  auto& http = stage.application.machine.http;
  http.answerAlways("GET", "/devices/d2/logs?limit=1000&offset=0", 500, R"({"error":"Not now"})");
  stage.application.screen<ChildDetailView>().seeAllActivity();
  stage.settle();
  ASSERT_TRUE(stage.shows("Try Again"));
  const auto asked = [&] { return http.count("GET", "/devices/d2/logs?limit=1000&offset=0"); };
  const auto before = asked();
  stage.press(Qt::Key_F5);
  EXPECT_EQ(asked(), before + 1);
  stage.press(Qt::Key_R, Qt::ControlModifier);
  EXPECT_EQ(asked(), before + 2);
  stage.press(Qt::Key_F1);
  EXPECT_TRUE(stage.shows("Refresh, or try again"));
}

TEST_F(ChildActivityPage, shows_the_alert_of_a_refused_change_over_itself) {
  open();
  stage.application.machine.http.answerAlways("POST", "/children/c1/policy/allow", 500,
                                              R"({"error":"Not now"})");
  dynamic_cast<BlockedSiteRow&>(*screen().siteRows.find("blocked ads.example")).allow();
  stage.settle();
  EXPECT_TRUE(stage.shows("Not now"));
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(stage.application.screen<ChildDetailView>().errorAlert.isShown());
  EXPECT_NE(stage.application.find<ChildActivityView>(), nullptr);
}

}  // namespace
}  // namespace quillmar::ui
