#include <gtest/gtest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <set>
#include <string>

#include "tests/ui/support/scene_walk.h"

namespace quillmar::ui {
namespace {

// What a person presses: the control itself, or the chart over whose bars the press can slide.
const QQuickItem& targetOf(const QQuickItem& control) {
  const auto* const target = control.property("target").value<QQuickItem*>();
  return target ? *target : control;
}

template <class Check>
void forEachControl(UiStage& stage, Check check) {
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    if (!item.activeFocusOnTab() && !isButton(item)) {
      return;
    }
    auto* const accessible = QAccessible::queryAccessibleInterface(const_cast<QQuickItem*>(&item));
    ASSERT_NE(accessible, nullptr) << item.metaObject()->className();
    check(item, *accessible);
  });
}

// Checks every state of every screen of a parent.
class ParentAccessibility : public testing::TestWithParam<Shot> {
 protected:
  static UiStage::Options options(double textScale) {
    return {
        .stored = GetParam().stored, .size = {390, 844}, .desktop = {.dark = false, .textScale = textScale}};
  }
  static void checkControls(UiStage& stage) {
    int controls = 0;
    forEachControl(stage, [&](const QQuickItem& item, QAccessibleInterface& accessible) {
      const auto name = accessible.text(QAccessible::Name).toStdString();
      EXPECT_FALSE(name.empty()) << item.metaObject()->className();
      EXPECT_NE(accessible.role(), QAccessible::NoRole) << name;
      EXPECT_NE(accessible.role(), QAccessible::Client) << name;
      const QQuickItem& target = targetOf(item);
      EXPECT_GE(target.height(), 44) << name;
      EXPECT_GE(target.width(), 44) << name;
      ++controls;
    });
    EXPECT_GE(controls, 1);
  }
};

TEST_P(ParentAccessibility, every_control_has_a_name_a_role_and_a_large_enough_target) {
  for (const double textScale : {1.0, 2.0}) {
    UiStage stage(options(textScale));
    play(stage, GetParam());
    checkControls(stage);
  }
}

INSTANTIATE_TEST_SUITE_P(Scenes, ParentAccessibility, testing::ValuesIn(parentScenes()),
                         [](const auto& scene) {
                           std::string name = scene.param.name;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

// The page, or the topmost sheet, that contains the focus.
const QQuickItem* front(const UiStage& stage) {
  const QQuickItem* item = stage.window().activeFocusItem();
  while (item->parentItem() != nullptr && !item->parentItem()->inherits("QQuickOverlay")) {
    item = item->parentItem();
  }
  return item;
}

// A control that occurs more than once on a screen.
struct Repeated {
  std::string scene;
  QString name;
};
void PrintTo(const Repeated& repeated, std::ostream* out) { *out << repeated.scene; }

class RepeatedControl : public testing::TestWithParam<Repeated> {};

TEST_P(RepeatedControl, states_which_one_it_is) {
  const auto scenes = parentScenes();
  const auto scene = std::ranges::find(scenes, GetParam().scene, &Shot::name);
  ASSERT_NE(scene, scenes.end());
  UiStage stage({.stored = scene->stored, .size = {390, 844}});
  play(stage, *scene);
  std::multiset<QString> places;
  forEachControl(stage, [&](const QQuickItem& item, QAccessibleInterface& accessible) {
    if (front(stage)->isAncestorOf(&item) && accessible.text(QAccessible::Name) == GetParam().name) {
      places.insert(accessible.text(QAccessible::Description));
    }
  });
  EXPECT_GE(places.size(), 2U);
  for (const auto& place : places) {
    EXPECT_FALSE(place.isEmpty());
    EXPECT_EQ(places.count(place), 1U) << place.toStdString();
  }
}

INSTANTIATE_TEST_SUITE_P(All, RepeatedControl,
                         testing::Values(Repeated{"register", "Show password"},
                                         Repeated{"dashboard", "Add Device"}),
                         [](const auto& repeated) { return repeated.param.scene; });

}  // namespace
}  // namespace quillmar::ui
