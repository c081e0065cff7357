#include <gtest/gtest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRectF>
#include <chrono>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/ui/support/child_page.h"

// The button with which a row offers what its swipe does.
namespace quillmar::ui {
namespace {

using namespace std::chrono_literals;
using Pointer = UiStage::Pointer;

constexpr auto allowedPolicy =
    R"({"id":"p1","child_id":"c1","family_id":"f","is_blocked":false,"block_mode":"blacklist","blocked_domains":[],"allowed_domains":["Library.example.org","games.example"],"created_at":"c","updated_at":"u"})";

struct RowButtons : testing::Test, ChildPage {
  explicit RowButtons(double textScale = 1, QSize size = {390, 2600})
      : ChildPage(
            {.stored = signedInParent(), .size = size, .desktop = {.dark = false, .textScale = textScale}},
            allowedPolicy) {}

  QQuickItem& control(const QString& name) { return stage.requiredControl(name); }
  void pointAt(const QString& name) { stage.pointAt(middleOf(control(name))); }
  void pointAway() { stage.pointAt({1, 1}); }
  bool has(const QString& name) const { return stage.control(name) != nullptr; }
  // The places of all texts beside the buttons.
  std::map<const QQuickItem*, QRectF> textPlaces() const {
    std::map<const QQuickItem*, QRectF> places;
    forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
      if (item.inherits("QQuickText") && !buttonAround(item.parentItem())) {
        places[&item] = item.mapRectToScene(item.boundingRect());
      }
    });
    return places;
  }
  // The texts whose place differs from `before`.
  std::vector<std::string> movedSince(const std::map<const QQuickItem*, QRectF>& before) const {
    std::vector<std::string> moved;
    for (const auto& [text, place] : textPlaces()) {
      if (const auto former = before.find(text); former == before.end() || former->second != place) {
        moved.push_back(text->property("text").toString().toStdString());
      }
    }
    return moved;
  }
};

// A row, its button and what the button sends.
struct Offer {
  const char* row;
  const char* button;
  const char* sends;
  ChildDetailTab tab = ChildDetailTab::realTime;
};
void PrintTo(const Offer& offer, std::ostream* out) { *out << offer.button; }

class OfferTest : public RowButtons, public testing::WithParamInterface<Offer> {
 protected:
  OfferTest() { choose(GetParam().tab); }
};

TEST_P(OfferTest, is_shown_under_the_pointer_only) {
  EXPECT_FALSE(has(GetParam().button));
  pointAt(GetParam().row);
  EXPECT_TRUE(has(GetParam().button));
  pointAway();
  EXPECT_FALSE(has(GetParam().button));
}

TEST_P(OfferTest, a_click_performs_it_once) {
  pointAt(GetParam().row);
  ASSERT_TRUE(has(GetParam().button));
  pointAt(GetParam().button);
  ASSERT_TRUE(has(GetParam().button));
  stage.clickAt(middleOf(control(GetParam().button)));
  EXPECT_EQ(changes(), std::vector<std::string>{GetParam().sends});
}

TEST_P(OfferTest, is_shown_under_the_keyboards_focus_and_reached_by_the_next_tab) {
  stage.focusOn(GetParam().row);
  ASSERT_TRUE(has(GetParam().button));
  stage.press(Qt::Key_Tab);
  ASSERT_EQ(stage.focusedName(), GetParam().button);
  stage.press(Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_EQ(stage.focusedName(), GetParam().row);
  EXPECT_EQ(changes(), std::vector<std::string>());

  stage.press(Qt::Key_Tab);
  stage.press(Qt::Key_Space);
  EXPECT_EQ(changes(), std::vector<std::string>{GetParam().sends});
  EXPECT_NE(stage.focusedName(), GetParam().button);
  EXPECT_FALSE(stage.focusedName().isEmpty());
}

TEST_P(OfferTest, is_a_button_for_a_screen_reader) {
  stage.focusOn(GetParam().row);
  auto* const accessible = QAccessible::queryAccessibleInterface(&control(GetParam().button));
  ASSERT_NE(accessible, nullptr);
  EXPECT_EQ(accessible->role(), QAccessible::Button);
  ASSERT_NE(accessible->actionInterface(), nullptr);
  accessible->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  stage.settle();
  EXPECT_EQ(changes(), std::vector<std::string>{GetParam().sends});
}

TEST_P(OfferTest, a_finger_sees_none) {
  stage.tap(middleOf(control(GetParam().row)));
  EXPECT_FALSE(has(GetParam().button));
  EXPECT_EQ(changes(), std::vector<std::string>());
}

TEST_P(OfferTest, moves_no_text) {
  const auto before = textPlaces();
  pointAt(GetParam().row);
  ASSERT_TRUE(has(GetParam().button));
  EXPECT_EQ(movedSince(before), std::vector<std::string>());
}

TEST_P(OfferTest, covers_no_text_that_is_drawn) {
  pointAt(GetParam().row);
  const auto& button = control(GetParam().button);
  const QRectF place = button.mapRectToScene(button.boundingRect());
  for (const auto& [text, where] : textPlaces()) {
    if (shownOpacity(*text) > 0) {
      EXPECT_FALSE(place.intersects(where)) << text->property("text").toString().toStdString();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, OfferTest,
    testing::Values(Offer{"games.example", "Allow games.example", "POST /children/c1/policy/allow"},
                    Offer{"games.example", "Allow games.example", "POST /children/c1/policy/allow",
                          ChildDetailTab::sitesBlocked},
                    Offer{"example.co.uk", "Block example.co.uk", "POST /children/c1/policy/block",
                          ChildDetailTab::sitesAllowed},
                    Offer{"Library.example.org", "Remove Library.example.org",
                          "DELETE /children/c1/policy/allow/Library.example.org",
                          ChildDetailTab::sitesAllowed}));

TEST_F(RowButtons, unlinking_asks_first_and_returns_the_focus) {
  for (const bool byKey : {true, false}) {
    if (byKey) {
      stage.focusOn("Mia's phone");
      stage.press(Qt::Key_Tab);
      ASSERT_EQ(stage.focusedName(), "Unlink Mia's phone");
      stage.press(Qt::Key_Return);
    } else {
      pointAt("Mia's phone");
      stage.clickAt(middleOf(control("Unlink Mia's phone")));
    }
    ASSERT_TRUE(stage.shows("Unlink Device?"));
    stage.press(Qt::Key_Escape);
    EXPECT_FALSE(stage.shows("Unlink Device?"));
    EXPECT_EQ(stage.focusedName(), "Mia's phone");
  }
  EXPECT_EQ(changes(), std::vector<std::string>());
}

TEST_F(RowButtons, only_the_row_under_the_pointer_has_one) {
  pointAt("games.example");
  EXPECT_TRUE(has("Allow games.example"));
  EXPECT_FALSE(has("Allow example.co.uk"));
  pointAt("example.co.uk");
  EXPECT_FALSE(has("Allow games.example"));
  EXPECT_TRUE(has("Allow example.co.uk"));
}

TEST_F(RowButtons, a_site_that_is_already_allowed_has_none) {
  pointAt("school.example");
  EXPECT_FALSE(has("Allow school.example"));
  stage.focusOn("school.example");
  EXPECT_FALSE(has("Allow school.example"));
}

TEST_F(RowButtons, goes_once_the_site_is_allowed_and_the_focus_stays_on_the_row) {
  stage.focusOn("games.example");
  stage.press(Qt::Key_Tab);
  stage.press(Qt::Key_Return);
  ASSERT_EQ(changes().size(), 1U);
  EXPECT_FALSE(has("Allow games.example"));
  EXPECT_EQ(stage.focusedName(), "games.example");
}

TEST_F(RowButtons, keeps_the_focus_if_another_parent_allows_the_site_meanwhile) {
  stage.focusOn("games.example");
  stage.press(Qt::Key_Tab);
  ASSERT_EQ(stage.focusedName(), "Allow games.example");
  screen().policySection.allowedDomains = std::vector<std::string>{"games.example"};
  stage.settle();
  EXPECT_EQ(stage.focusedName(), "Allow games.example");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(changes(), std::vector<std::string>());
  EXPECT_EQ(stage.focusedName(), "games.example");
  EXPECT_FALSE(has("Allow games.example"));
}

TEST_F(RowButtons, a_row_that_is_drawn_aside_has_none) {
  stage.drag(Pointer::mouse, middleOf(control("games.example")), {60, 0}, UiStage::Ending::holdOn);
  EXPECT_FALSE(has("Allow games.example"));
  stage.letGo(Pointer::mouse, middleOf(control("games.example")));
  EXPECT_TRUE(has("Allow games.example"));

  screen().devicesSection.deviceRows[0].dragEnded(-90, 0);
  stage.settle();
  pointAt("Mia's phone");
  EXPECT_FALSE(has("Unlink Mia's phone"));
}

TEST_F(RowButtons, a_finger_that_removes_a_row_shows_none_on_the_next_one) {
  http().answerAlways("DELETE", "/children/c1/policy/allow/school.example", 200, allowedPolicy);
  choose(ChildDetailTab::sitesAllowed);
  stage.drag(Pointer::finger, middleOf(control("school.example")), {-100, 0});
  ASSERT_EQ(changes().size(), 1U);
  ASSERT_TRUE(stage.focused()->activeFocusOnTab()) << "no row has the focus";
  EXPECT_FALSE(has("Remove " + stage.focusedName()));
}

TEST_F(RowButtons, a_finger_that_cancels_a_question_sees_none) {
  stage.drag(Pointer::finger, middleOf(control("Mia's phone")), {-150, 0});
  stage.tap(middleOf(*stage.find("Unlink")));
  ASSERT_TRUE(stage.shows("Unlink Device?"));
  stage.tap(middleOf(*stage.find("Cancel")));
  EXPECT_FALSE(stage.shows("Unlink Device?"));
  EXPECT_FALSE(has("Unlink Mia's phone"));
}

TEST_F(RowButtons, the_menu_returns_the_button_with_the_focus) {
  stage.focusOn("games.example");
  stage.press(Qt::Key_Menu);
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(stage.focusedName(), "games.example");
  EXPECT_TRUE(has("Allow games.example"));
}

TEST_F(RowButtons, a_row_with_a_control_of_its_own_has_no_second_one) {
  screen().devicesSection.linkDevice();
  stage.settle();
  auto& list = stage.application.screen<LinkDeviceView>();
  ASSERT_GT(list.deviceRows.size(), 0U);
  const auto name = QString::fromStdString(list.deviceRows[0].deviceDisplayName());
  pointAt(name);
  int buttons = 0;
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    buttons += isButton(item) && accessibleName(item) == "Delete " + name ? 1 : 0;
  });
  EXPECT_EQ(buttons, 1);
}

struct LargeRowButtons : RowButtons {
  LargeRowButtons() : RowButtons(2, {360, 4200}) {}
};

TEST_F(LargeRowButtons, a_word_that_needs_too_much_room_becomes_its_symbol) {
  const auto before = textPlaces();
  pointAt("Mia's phone");
  const auto& button = control("Unlink Mia's phone");
  EXPECT_EQ(button.width(), 44);
  EXPECT_FALSE(stage.shows("Unlink"));
  EXPECT_EQ(movedSince(before), std::vector<std::string>());
}

}  // namespace
}  // namespace quillmar::ui
