#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "testing/ui/parent_stage.h"
#include "ui/items/match_marks_item.h"

// Finding rows on the screens of a parent.
namespace quillmar::ui {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

std::string threeChildren() {
  return R"({"children":[)" + childJson("1", "Zoë", "") + "," + childJson("2", "Anna", "") + "," +
         childJson("3", "Noah", "") + R"(],"unassigned_devices":[]})";
}

// The marks in the window, from the top to the bottom.
std::vector<QRectF> marksIn(const UiStage& stage) {
  std::vector<QRectF> found;
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    if (const auto* const marks = qobject_cast<const MatchMarksItem*>(&item)) {
      for (const QRectF& rect : marks->marks()) {
        found.push_back(item.mapRectToScene(rect));
      }
    }
  });
  std::ranges::sort(found, {}, &QRectF::y);
  return found;
}

struct DashboardFilter : testing::Test {
  DashboardFilter() {
    showFamily(stage);
    answerFamily(stage, threeChildren());
    stage.advance(30s);
  }

  void find() { stage.press(Qt::Key_F, Qt::ControlModifier); }
  bool showsCard(const QString& name) { return stage.control(name + ", 0 devices, 0 online") != nullptr; }

  UiStage stage{{.stored = signedInParent()}};
};

TEST_F(DashboardFilter, is_opened_by_its_key_and_filters_as_one_types) {
  find();
  EXPECT_EQ(stage.focusedName(), "Part of the name");
  stage.type("zoe");
  EXPECT_TRUE(showsCard("Zoë"));
  EXPECT_FALSE(showsCard("Anna"));
  EXPECT_FALSE(showsCard("Noah"));
}

TEST_F(DashboardFilter, is_opened_by_its_button) {
  stage.click("Find");
  EXPECT_EQ(stage.focusedName(), "Part of the name");
}

TEST_F(DashboardFilter, marks_what_was_found) {
  find();
  EXPECT_TRUE(marksIn(stage).empty());
  stage.type("o");
  const auto marks = marksIn(stage);
  ASSERT_EQ(marks.size(), 2U);
  const auto* const name = stage.find("Zoë");
  ASSERT_NE(name, nullptr);
  EXPECT_TRUE(name->mapRectToScene({0, 0, name->width(), name->height()}).contains(marks[0]));
  EXPECT_GT(marks[0].width(), 3);
  EXPECT_LT(marks[0].width(), 20) << "more than one letter is marked";
}

TEST_F(DashboardFilter, says_that_nothing_matches) {
  find();
  stage.type("x");
  EXPECT_TRUE(stage.shows("No match"));
  stage.press(Qt::Key_Backspace);
  EXPECT_FALSE(stage.shows("No match"));
  EXPECT_TRUE(showsCard("Noah"));
}

TEST_F(DashboardFilter, is_cleared_by_escape_which_returns_the_focus) {
  stage.focusOn("Add Another Child");
  find();
  stage.type("an");
  stage.press(Qt::Key_Escape);
  EXPECT_TRUE(showsCard("Noah"));
  EXPECT_EQ(stage.control("Part of the name"), nullptr);
  EXPECT_EQ(stage.focusedName(), "Add Another Child");
  EXPECT_TRUE(marksIn(stage).empty());
}

TEST_F(DashboardFilter, shows_the_cards_again_at_once_and_in_their_order) {
  find();
  stage.type("an");
  stage.pointAt(middleOf(*stage.control("Anna, 0 devices, 0 online")));
  stage.press(Qt::Key_Backspace);
  stage.press(Qt::Key_Backspace);
  double above = 0;
  for (const char* const name : {"Zoë", "Anna", "Noah"}) {
    const auto* const card = stage.control(QString(name) + ", 0 devices, 0 online");
    ASSERT_NE(card, nullptr) << name;
    EXPECT_GT(card->mapToScene({0, 0}).y(), above) << name;
    above = card->mapToScene({0, 0}).y();
  }
}

TEST_F(DashboardFilter, is_still_there_after_the_list_was_empty) {
  find();
  stage.type("zoe");
  answerFamily(stage, R"({"children":[],"unassigned_devices":[]})");
  stage.advance(30s);
  ASSERT_EQ(stage.control("Part of the name"), nullptr);
  answerFamily(stage, threeChildren());
  stage.advance(30s);
  EXPECT_NE(stage.control("Part of the name"), nullptr);
  EXPECT_TRUE(showsCard("Zoë"));
  EXPECT_FALSE(showsCard("Anna"));
}

TEST_F(DashboardFilter, changes_nothing_that_is_sent) {
  auto& http = stage.application.machine.http;
  const auto before = http.requests().size();
  find();
  stage.type("anna");
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(http.requests().size(), before);
}

TEST_F(DashboardFilter, is_not_offered_without_a_choice) {
  answerFamily(stage, R"({"children":[)" + childJson("1", "Zoë", "") + R"(],"unassigned_devices":[]})");
  stage.advance(30s);
  EXPECT_EQ(stage.control("Find"), nullptr);
  find();
  EXPECT_EQ(stage.control("Part of the name"), nullptr);
}

struct ChildFilter : testing::Test {
  ChildFilter() { openChild(stage); }

  UiStage stage{{.stored = signedInParent()}};
};

TEST_F(ChildFilter, filters_the_devices) {
  stage.press(Qt::Key_F, Qt::ControlModifier);
  stage.type("PHONE");
  EXPECT_TRUE(stage.shows("Mia's phone"));
  EXPECT_TRUE(stage.shows("No match"));
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(stage.shows("No match"));
  EXPECT_TRUE(stage.application.screen<DeviceListView>().showChildDetail()) << "Escape closed the page";
}

TEST_F(ChildFilter, opens_below_the_tabs_and_moves_nothing_above_it) {
  const double above = stage.control("Sites Blocked")->mapToScene({0, 0}).y();
  stage.press(Qt::Key_F, Qt::ControlModifier);
  EXPECT_EQ(stage.control("Sites Blocked")->mapToScene({0, 0}).y(), above);
  const double field = stage.control("Part of the name")->mapToScene({0, 0}).y();
  EXPECT_GT(field, above);
  stage.type("x");
  stage.settle();
  EXPECT_EQ(stage.control("Sites Blocked")->mapToScene({0, 0}).y(), above);
  EXPECT_EQ(stage.control("Part of the name")->mapToScene({0, 0}).y(), field);
}

TEST_F(ChildFilter, moves_a_row_to_the_place_of_those_that_went) {
  stage.press(Qt::Key_F, Qt::ControlModifier);
  const double top = stage.control("Mia's phone")->mapToScene({0, 0}).y();
  stage.type("laptop");
  // Rows start to move in the frame in which they are laid out.
  stage.settle();
  auto* const row = stage.control("School laptop");
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->mapToScene({0, 0}).y(), top);
  EXPECT_EQ(shownOpacity(*row), 1);
  EXPECT_GT(row->height(), 40);
  const auto* const name = stage.find("School laptop");
  ASSERT_NE(name, nullptr);
  EXPECT_GT(name->width(), 60);
}

TEST_F(ChildFilter, leaves_the_page_with_the_next_escape) {
  stage.press(Qt::Key_F, Qt::ControlModifier);
  stage.press(Qt::Key_Escape);
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(stage.application.screen<DeviceListView>().showChildDetail());
}

TEST_F(ChildFilter, is_not_that_of_the_page_below) {
  stage.press(Qt::Key_F, Qt::ControlModifier);
  stage.type("x");
  EXPECT_FALSE(dashboard(stage).filter.isOpen());
  EXPECT_FALSE(dashboard(stage).filter.isActive());
}

}  // namespace
}  // namespace quillmar::ui
