#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <chrono>
#include <stdexcept>

#include "app/country_selection_view.h"
#include "app/role_selection_view.h"
#include "testing/ui/parent_stage.h"

namespace quillmar::ui {
namespace {

using namespace std::chrono_literals;

// Also finds items outside the visible area.
QQuickItem* findHidden(QQuickItem& root, const QString& text) {
  for (auto* const child : root.childItems()) {
    if (auto* const found = findHidden(*child, text)) {
      return found;
    }
  }
  return root.property("text") == text ? &root : nullptr;
}

struct Entrances : testing::Test {
  explicit Entrances(const StoredSettings& stored = {}) : stage({.stored = stored}) {}

  QQuickItem& item(const QString& text) { return *findHidden(*stage.window().contentItem(), text); }
  double opacity(const QString& text) { return shownOpacity(item(text)); }

  UiStage stage;
};

struct RegionEntrances : Entrances {
  RegionEntrances() { stage.click("I'm a Parent"); }

  CountrySelectionView& screen() { return stage.application.screen<CountrySelectionView>(); }
  double markScale(const QString& region) {
    double scale = 0;
    const auto look = [&](const auto& self, const QQuickItem& in) -> void {
      if (in.property("name") == "checkmark.circle.fill") {
        scale = in.scale();
      }
      for (const auto* const child : in.childItems()) {
        self(self, *child);
      }
    };
    look(look, *stage.control(region));
    return scale;
  }
};

// A spring with a period of 0.3 s and a damping of 0.7 overshoots by 4.6 % and first reaches its end after
// 157 ms.
TEST_F(RegionEntrances, the_mark_of_a_chosen_region_springs) {
  const double from = markScale("Singapore");
  ASSERT_LT(from, 1);
  screen().regionCards[2].action();
  stage.step(0ms);
  stage.step(150ms);
  EXPECT_LT(markScale("Singapore"), 1);
  stage.step(7ms);
  EXPECT_NEAR(markScale("Singapore"), 1, 0.002);
  stage.step(53ms);
  EXPECT_NEAR((markScale("Singapore") - from) / (1 - from), 1.046, 0.002);
  stage.settle();
  EXPECT_EQ(markScale("Singapore"), 1);
  EXPECT_EQ(markScale("Australia"), from);
}

TEST_F(RegionEntrances, the_role_cards_stay_hidden_when_a_region_is_confirmed) {
  ASSERT_EQ(opacity("I'm a Child"), 0);
  auto& child = item("I'm a Child");
  screen().confirmRegion();
  for (int i = 0; i < 5; ++i) {
    stage.step(50ms);
    EXPECT_EQ(shownOpacity(child), 0) << i;
  }
}

TEST_F(RegionEntrances, the_role_cards_fade_in_when_a_parent_goes_back) {
  screen().goBack();
  stage.step(0ms);
  stage.step(150ms);
  EXPECT_GT(opacity("I'm a Child"), 0);
  EXPECT_LT(opacity("I'm a Child"), 1);
  stage.settle();
  EXPECT_EQ(opacity("I'm a Child"), 1);
}

// A part of a page that enters: its opacity, and its distance from its final place.
struct Arrival {
  double opacity = 0;
  double distance = 0;
};

struct ParentEntrances : Entrances {
  ParentEntrances() : Entrances(signedInParent()) {
    dashboard(stage).logout();
    dashboard(stage).logoutConfirmation.confirm();
    stage.step(0ms);
  }

  // The entrance of the part that contains this text.
  Arrival arrival(const QString& text) {
    const QQuickItem* part = &item(text);
    while (part && !QString(part->metaObject()->className()).startsWith("EntryColumn")) {
      part = part->parentItem();
    }
    if (!part) {
      throw std::logic_error("no part that comes in shows \"" + text.toStdString() + "\"");
    }
    return {part->opacity(), part->mapToItem(part->parentItem(), {0, 0}).y() - part->y()};
  }
  double logoOpacity() {
    double opacity = -1;
    forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
      if (QString(item.metaObject()->className()).startsWith("Logo")) {
        opacity = item.opacity();
      }
    });
    return opacity;
  }
};

TEST_F(ParentEntrances, the_form_of_a_sign_in_enters_two_tenths_of_a_second_after_its_header) {
  stage.step(190ms);
  EXPECT_GT(logoOpacity(), 0);
  EXPECT_EQ(arrival("Remember me").opacity, 0);
  EXPECT_EQ(arrival("Remember me").distance, 30);
  stage.step(110ms);
  EXPECT_GT(arrival("Remember me").opacity, 0);
  EXPECT_LT(arrival("Remember me").opacity, 1);
  EXPECT_LT(arrival("Remember me").distance, 30);
  stage.step(390ms);
  EXPECT_LT(arrival("Remember me").opacity, 1);
  stage.step(20ms);
  EXPECT_EQ(arrival("Remember me").opacity, 1);
  EXPECT_EQ(arrival("Remember me").distance, 0);
}

TEST_F(ParentEntrances, the_form_of_a_registration_enters_after_its_header_and_both_slide) {
  stage.settle();
  stage.application.screen<LoginView>().signUp();
  stage.step(0ms);
  const QString header = "Start protecting your family today";
  const QString form = "Used for account recovery";
  EXPECT_EQ(arrival(header).opacity, 0);
  EXPECT_EQ(arrival(header).distance, 30);
  stage.step(150ms);
  EXPECT_GT(arrival(header).opacity, 0);
  EXPECT_LT(arrival(header).distance, 30);
  EXPECT_GT(arrival(header).distance, 0);
  EXPECT_EQ(arrival(form).opacity, 0);
  EXPECT_EQ(arrival(form).distance, 30);
  stage.step(200ms);
  EXPECT_GT(arrival(form).opacity, 0);
  EXPECT_LT(arrival(form).opacity, arrival(header).opacity);
  stage.settle();
  for (const auto& part : {header, form}) {
    EXPECT_EQ(arrival(part).opacity, 1);
    EXPECT_EQ(arrival(part).distance, 0);
  }
}

}  // namespace
}  // namespace quillmar::ui
