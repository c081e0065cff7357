#include <gtest/gtest.h>

#include <QColor>
#include <QQuickItem>
#include <QVariant>
#include <algorithm>
#include <ostream>
#include <string>

#include "testing/ui/parent_stage.h"
#include "tools/pictures/scenes.h"

namespace quillmar::ui {
namespace {

// A disabled button and what it must show.
struct Idle {
  std::string scene;
  QString button;
  bool hasSpinner;
  bool hasLabel;
};
void PrintTo(const Idle& idle, std::ostream* out) { *out << idle.scene; }

bool isGrey(const QColor& color) {
  constexpr int hardlyColoured = 40;
  return color.alpha() == 0 || color.hsvSaturation() < hardlyColoured;
}

class ButtonOutOfUse : public testing::TestWithParam<Idle> {
 protected:
  static Shot scene() {
    const auto all = scenes();
    return *std::ranges::find(all, GetParam().scene, &Shot::name);
  }
};

TEST_P(ButtonOutOfUse, is_grey_and_states_its_progress) {
  const auto& idle = GetParam();
  const Shot shot = scene();
  for (const bool dark : {false, true}) {
    UiStage stage({.stored = shot.stored, .desktop = {.dark = dark}});
    shot.play(stage);
    stage.settle();
    const auto* const button = stage.control(idle.button);
    ASSERT_NE(button, nullptr);
    EXPECT_FALSE(button->isEnabled());
    bool hasSpinner = false;
    bool hasLabel = false;
    forEachShown(*button, [&](const QQuickItem& item) {
      const QString kind = item.metaObject()->className();
      for (const auto* const property : {"color", "from", "to"}) {
        const auto color = item.property(property).value<QColor>();
        EXPECT_TRUE(isGrey(color)) << kind.toStdString() << " " << property << " "
                                   << color.name().toStdString();
      }
      hasSpinner = hasSpinner || kind.startsWith("Spinner");
      hasLabel = hasLabel || (item.inherits("QQuickText") && item.property("text") == idle.button);
    });
    EXPECT_EQ(hasSpinner, idle.hasSpinner);
    EXPECT_EQ(hasLabel, idle.hasLabel);
  }
}

INSTANTIATE_TEST_SUITE_P(Scenes, ButtonOutOfUse,
                         testing::Values(Idle{"login", "Sign In", false, true},
                                         Idle{"login-running", "Sign In", true, false},
                                         Idle{"register-running", "Create Account", true, false},
                                         Idle{"join-validating", "Validate Code", true, true},
                                         Idle{"join-running", "Join Family", true, true},
                                         Idle{"add-child-running", "Creating...", true, true},
                                         Idle{"scanner-running", "Complete Enrollment", true, false},
                                         Idle{"manual-running", "Add Device", true, false},
                                         Idle{"family-inviting", "Invite", false, false},
                                         Idle{"home-network-updating", "Updating...", true, true},
                                         Idle{"instructions-configuring", "Configuring...", false, true}),
                         [](const auto& idle) {
                           std::string name = idle.param.scene;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

TEST(AlertButtons, stand_one_above_the_other_if_a_text_needs_the_room) {
  UiStage stage({.stored = signedInParent()});
  const auto y = [&](const char* name) { return stage.control(name)->mapToScene({0, 0}).y(); };
  showFamily(stage);
  dashboard(stage).logout();
  stage.settle();
  EXPECT_EQ(y("Cancel"), y("Logout"));
  dashboard(stage).logoutConfirmation.cancel();
  openHomeNetwork(stage, R"({"current_ip":"203.0.113.7","ip_matches":false})").setUp();
  stage.settle();
  EXPECT_NE(y("Not Now"), y("I'm at Home - Set Up"));
  EXPECT_EQ(stage.control("Not Now")->height(), stage.control("I'm at Home - Set Up")->height())
      << "a text takes two lines";
}

TEST(Chips, of_the_time_spans_fit_in_one_line_of_a_phone) {
  UiStage stage({.stored = signedInParent(), .size = {390, 844}});
  openChild(stage).selectedTab = ChildDetailTab::sitesBlocked;
  stage.settle();
  EXPECT_EQ(stage.control("Today")->mapToScene({0, 0}).y(),
            stage.control("Last 5 min")->mapToScene({0, 0}).y());
}

TEST(Buttons, keep_their_colour_while_their_screen_fades_out) {
  UiStage stage;
  stage.click("I'm a Parent");
  auto* const button = stage.control("Continue");
  ASSERT_NE(button, nullptr);
  auto* const ground = button->property("background").value<QQuickItem*>();
  const auto color = ground->property("from").value<QColor>();
  EXPECT_FALSE(isGrey(color));
  QMetaObject::invokeMethod(button, "clicked");
  stage.step(Duration(100));
  ASSERT_FALSE(button->isEnabled()) << "the screen has not begun to leave";
  EXPECT_EQ(ground->property("from").value<QColor>(), color);
}

}  // namespace
}  // namespace quillmar::ui
