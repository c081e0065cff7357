#include <gtest/gtest.h>

#include <QQuickItem>
#include <algorithm>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/ui/support/scene_walk.h"

// A single choice among several options; the arrow keys move between them.
namespace quillmar::ui {
namespace {

struct Choices {
  std::string scene;
  std::vector<QString> names;  // in the order on screen
};
void PrintTo(const Choices& choices, std::ostream* out) { *out << choices.scene; }

class ChoicesTest : public testing::TestWithParam<Choices> {
 protected:
  void SetUp() override {
    const auto all = scenes();
    shot = *std::ranges::find(all, GetParam().scene, &Shot::name);
  }
  static void expectChosen(const UiStage& stage, const QString& name) {
    EXPECT_EQ(stage.focusedName(), name);
    for (const auto& choice : GetParam().names) {
      EXPECT_EQ(isChecked(*stage.control(choice)), choice == name) << choice.toStdString();
    }
  }

  Shot shot;
};

TEST_P(ChoicesTest, follow_the_arrow_keys_and_wrap_around) {
  const auto& names = GetParam().names;
  UiStage stage({.stored = shot.stored});
  play(stage, shot);
  stage.focusOn(names.front());
  const std::pair<Qt::Key, Qt::Key> arrows[] = {{Qt::Key_Down, Qt::Key_Up}, {Qt::Key_Right, Qt::Key_Left}};
  for (const auto& [next, former] : arrows) {
    for (std::size_t i = 1; i <= names.size(); ++i) {
      stage.press(next);
      expectChosen(stage, names[i % names.size()]);
    }
    stage.press(former);
    expectChosen(stage, names.back());
    stage.press(next);
  }
}

INSTANTIATE_TEST_SUITE_P(All, ChoicesTest,
                         testing::Values(Choices{"region", {"Australia", "New Zealand", "Singapore"}},
                                         Choices{"parent-settings", {"System", "Light", "Dark"}},
                                         Choices{"manual",
                                                 {"PlayStation", "Xbox", "Nintendo Switch", "Smart TV",
                                                  "Other Device"}}),
                         [](const auto& choices) {
                           std::string name = choices.param.scene;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

}  // namespace
}  // namespace quillmar::ui
