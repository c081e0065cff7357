#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "testing/ui/parent_stage.h"

// Lists that change while a person uses them.
namespace quillmar::ui {
namespace {

using namespace std::chrono_literals;
using Pointer = UiStage::Pointer;

constexpr auto allowedField = "Add allowed site (e.g., example.com)";

struct StillLists : testing::Test {
  explicit StillLists(QSize size = {390, 844}) : stage({.stored = signedInParent(), .size = size}) {
    openChild(stage);
    visit({"a.test", "b.test", "c.test", "d.test", "e.test"});
  }

  UiStage stage;

  // Rows start to move in the frame in which they are laid out.
  void comeToRest() { stage.settle(); }
  ChildDetailView& screen() { return stage.application.screen<ChildDetailView>(); }
  ScriptedHttpSession& http() { return stage.application.machine.http; }
  // Sets the sites of the last minute, newest first. The next tick fetches them.
  void visit(const std::vector<std::string>& sites) {
    const auto now = stage.application.machine.dispatch.now();
    std::string logs;
    for (std::size_t i = 0; i < sites.size(); ++i) {
      logs +=
          (i > 0 ? "," : "") + logJson(static_cast<int>(i), sites[i], false, now - std::chrono::seconds(i));
    }
    for (const auto* id : {"d2", "d3", "d4", "d5"}) {
      http().answerAlways("GET", "/devices/" + std::string(id) + "/logs", 200, R"({"logs":[]})");
    }
    http().answerAlways("GET", "/devices/d1/logs", 200, R"({"logs":[)" + logs + "]}");
    stage.advance(2s);
    comeToRest();
  }
  QQuickItem& row(const QString& name) { return stage.requiredControl(name); }
  // The row's y coordinate in the window.
  double place(const QString& name) { return row(name).mapToScene({0, 0}).y(); }
  double scrolled() {
    return around(stage.control("Mia's phone"), "QQuickFlickable")->property("contentY").toDouble();
  }
  // Scrolls by wheel until it is in the middle of the window, or as near as the page allows.
  void scrollTo(const QString& name) {
    auto* const page = around(&row(name), "QQuickFlickable");
    const double longest = page->property("contentHeight").toDouble() - page->height();
    page->setProperty("contentY", std::clamp(scrolled() + place(name) - page->height() / 2, 0.0, longest));
    stage.settle();
  }
  // The sites from the top of the window to its bottom.
  std::vector<std::string> sitesFromTheTop() {
    std::vector<std::pair<double, std::string>> found;
    forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
      const QString name = item.activeFocusOnTab() && !isButton(item) ? accessibleName(item) : QString();
      if (name.endsWith(".test")) {
        found.emplace_back(item.mapToScene({0, 0}).y(), name.toStdString());
      }
    });
    std::ranges::sort(found);
    std::vector<std::string> sites;
    for (auto& [y, name] : found) {
      sites.push_back(std::move(name));
    }
    return sites;
  }
};

using Sites = std::vector<std::string>;

TEST_F(StillLists, the_row_that_takes_the_place_of_a_removed_one_gets_the_focus) {
  stage.focusOn("c.test");
  const double before = scrolled();
  const double there = place("c.test");
  ASSERT_GT(before, 0);
  visit({"a.test", "b.test", "d.test", "e.test"});
  EXPECT_EQ(stage.focusedName(), "d.test");
  EXPECT_EQ(place("d.test"), there);
  EXPECT_EQ(scrolled(), before) << "the page jumped";
}

TEST_F(StillLists, the_last_row_gets_the_focus_when_the_last_one_was_removed) {
  stage.focusOn("e.test");
  const double before = scrolled();
  visit({"a.test", "b.test"});
  EXPECT_EQ(stage.focusedName(), "b.test");
  EXPECT_EQ(scrolled(), before) << "the page jumped";
}

TEST_F(StillLists, the_focus_keeps_its_place_when_rows_above_are_removed_too) {
  stage.focusOn("d.test");
  visit({"a.test", "c.test", "e.test"});
  EXPECT_EQ(stage.focusedName(), "e.test");
}

TEST_F(StillLists, a_new_row_in_the_place_of_the_focused_one_gets_the_focus) {
  stage.focusOn("c.test");
  visit({"new.test", "a.test", "b.test", "d.test", "e.test"});
  EXPECT_EQ(stage.focusedName(), "new.test");
  EXPECT_EQ(sitesFromTheTop(), (Sites{"a.test", "b.test", "new.test", "d.test", "e.test"}));
}

TEST_F(StillLists, the_placeholder_of_an_empty_list_holds_the_focus) {
  stage.focusOn("c.test");
  const double before = scrolled();
  visit({});
  ASSERT_FALSE(stage.control("a.test"));
  EXPECT_EQ(scrolled(), before) << "the page jumped";
  visit({"x.test", "y.test"});
  EXPECT_EQ(stage.focusedName(), "x.test");
}

TEST_F(StillLists, tab_continues_from_an_empty_list_to_what_follows) {
  stage.focusOn("c.test");
  visit({});
  EXPECT_EQ(stage.focused(), around(stage.find("No recent activity"), "QQuickRectangle"));
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "See All Activity");
}

TEST_F(StillLists, a_focus_elsewhere_is_unchanged) {
  stage.focusOn("Link Device");
  visit({});
  visit({"x.test"});
  EXPECT_EQ(stage.focusedName(), "Link Device");
}

TEST_F(StillLists, a_removed_site_passes_the_focus_to_the_next_one) {
  http().answerAlways(
      "DELETE", "/children/c1/policy/allow/school.example", 200,
      R"({"id":"p1","child_id":"c1","family_id":"f","is_blocked":false,"block_mode":"blacklist","blocked_domains":[],"allowed_domains":["Library.example.org"],"created_at":"c","updated_at":"u"})");
  stage.focusOn("Remove school.example");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(stage.focusedName(), "Remove Library.example.org");
}

// Both in a window that scrolls and in one that is high enough.
class AtAList : public StillLists, public testing::WithParamInterface<QSize> {
 protected:
  AtAList() : StillLists(GetParam()) {}
};

TEST_P(AtAList, rows_under_the_pointer_stay_and_new_ones_follow) {
  scrollTo("c.test");
  stage.pointAt(middleOf(row("b.test")));
  const double before = place("b.test");
  visit({"d.test", "x.test", "a.test", "b.test", "c.test", "e.test"});
  EXPECT_EQ(sitesFromTheTop(), (Sites{"a.test", "b.test", "c.test", "d.test", "e.test", "x.test"}));
  EXPECT_EQ(place("b.test"), before);
  stage.pointAt({3, 3});
  comeToRest();
  EXPECT_EQ(sitesFromTheTop(), (Sites{"d.test", "x.test", "a.test", "b.test", "c.test", "e.test"}));
}

TEST_P(AtAList, rows_with_the_focus_stay_and_new_ones_follow) {
  stage.focusOn("b.test");
  const double before = place("b.test");
  visit({"d.test", "x.test", "a.test", "b.test", "c.test", "e.test"});
  EXPECT_EQ(sitesFromTheTop(), (Sites{"a.test", "b.test", "c.test", "d.test", "e.test", "x.test"}));
  EXPECT_EQ(place("b.test"), before);
  EXPECT_EQ(stage.focusedName(), "b.test");
  stage.focusOn("Real-Time");
  comeToRest();
  EXPECT_EQ(sitesFromTheTop(), (Sites{"d.test", "x.test", "a.test", "b.test", "c.test", "e.test"}));
}

TEST_P(AtAList, an_unused_list_is_in_the_models_order) {
  visit({"d.test", "x.test", "a.test", "b.test"});
  EXPECT_EQ(sitesFromTheTop(), (Sites{"d.test", "x.test", "a.test", "b.test"}));
}

TEST_P(AtAList, a_text_box_below_stays_in_place_while_a_person_types) {
  stage.focusOn(allowedField);
  stage.type("exam");
  const double before = place(allowedField);
  visit({"x.test", "a.test", "b.test", "c.test", "d.test", "e.test"});
  ASSERT_TRUE(stage.control("x.test"));
  EXPECT_NEAR(place(allowedField), before, 0.5) << "the list has grown";
  visit({"x.test"});
  EXPECT_NEAR(place(allowedField), before, 0.5) << "the list has shrunk";
  visit({});
  EXPECT_NEAR(place(allowedField), before, 0.5) << "the list has gone";
  stage.type("ple");
  EXPECT_EQ(screen().policySection.newDomain(), "example");
}

TEST_P(AtAList, a_shifted_page_returns_to_its_place_after_typing) {
  stage.focusOn(allowedField);
  visit({});
  stage.focusOn("Real-Time");
  stage.settle();
  auto* const flickable = around(stage.control("Mia's phone"), "QQuickFlickable");
  flickable->setProperty("contentY", 0);
  stage.settle();
  EXPECT_GT(place("Real-Time"), 0);
  EXPECT_LT(place("Real-Time"), 250) << "a gap was left above the page";
}

INSTANTIATE_TEST_SUITE_P(Windows, AtAList, testing::Values(QSize(390, 844), QSize(390, 2600)));

// Two touches that are quicker than a double tap.
TEST_F(StillLists, the_second_quick_touch_of_a_row_counts) {
  const QPoint there = middleOf(row("Mia's phone"));
  const auto face = [&] {
    for (const auto* const child : row("Mia's phone").childItems()) {
      if (child->inherits("QQuickMouseArea")) {
        return child->x();
      }
    }
    return 1.0;
  };
  stage.drag(Pointer::finger, there, {-100, 0});
  ASSERT_EQ(face(), -80);
  stage.tap(there);
  EXPECT_EQ(face(), 0) << "the tap was lost";
  stage.drag(Pointer::finger, there, {-100, 0});
  EXPECT_EQ(face(), -80) << "the drag was lost";
}

}  // namespace
}  // namespace quillmar::ui
