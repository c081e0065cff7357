#include <gtest/gtest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <chrono>

#include "app/role_selection_view.h"
#include "app/session/role_manager.h"
#include "child/child_enrollment_view.h"
#include "child/child_home_view.h"
#include "testing/ui/ui_stage.h"

namespace quillmar::ui {
namespace {

using namespace std::chrono_literals;

constexpr auto initAnswer =
    R"({"enrollment_code":"K7QX2M","device_id":"d-1","expires_at":"2026-01-01T00:00:00Z"})";

DeviceRole roleOf(UiStage& stage) { return stage.application.environment().roleManager()->currentRole(); }

void openSettings(UiStage& stage) {
  stage.click("Settings");
  ASSERT_TRUE(stage.shows("Device Information"));
}

TEST(Window, shows_the_role_cards_at_the_first_start) {
  UiStage stage;
  EXPECT_TRUE(stage.shows("Welcome to Quillmar"));
  EXPECT_TRUE(stage.shows("I'm a Parent"));
  EXPECT_TRUE(stage.shows("I'm a Child"));
  EXPECT_EQ(roleOf(stage), DeviceRole::unset);
}

TEST(Window, a_role_is_chosen_by_keyboard_only) {
  UiStage stage;
  EXPECT_EQ(stage.focusedName(), "I'm a Parent");
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "I'm a Child");
  EXPECT_EQ(roleOf(stage), DeviceRole::unset);
  stage.press(Qt::Key_Return);
  EXPECT_EQ(roleOf(stage), DeviceRole::child);
  EXPECT_TRUE(stage.shows("Start Enrollment"));
  EXPECT_FALSE(stage.shows("I'm a Child"));
}

TEST(Window, a_parent_goes_to_the_regions_and_back_with_nothing_stored) {
  UiStage stage;
  stage.press(Qt::Key_Space);
  EXPECT_TRUE(stage.shows("Select Your Region"));
  EXPECT_FALSE(stage.shows("Who will use this device?"));
  stage.press(Qt::Key_Escape);
  EXPECT_TRUE(stage.shows("Who will use this device?"));
  EXPECT_FALSE(stage.shows("Select Your Region"));
  EXPECT_EQ(stage.focusedName(), "I'm a Parent");
  EXPECT_EQ(roleOf(stage), DeviceRole::unset);
}

TEST(Window, a_parent_chooses_a_region_by_mouse) {
  UiStage stage;
  stage.click("I'm a Parent");
  stage.click("Singapore");
  stage.click("Continue");
  EXPECT_EQ(roleOf(stage), DeviceRole::parent);
  EXPECT_EQ(stage.application.environment().roleManager()->selectedRegion(), Region::singapore);
  EXPECT_FALSE(stage.shows("Select Your Region"));
}

TEST(Window, an_enrollment_waits_shows_its_code_and_is_cancelled) {
  UiStage stage({.stored = asNewChild()});
  auto& http = stage.application.machine.http;
  http.hold("POST", "/enrollment/init");
  http.answer("POST", "/enrollment/init", 200, initAnswer);
  stage.press(Qt::Key_Return);
  EXPECT_TRUE(stage.shows("Initializing enrollment..."));
  EXPECT_FALSE(stage.shows("Start Enrollment"));

  http.releaseAll();
  stage.settle();
  EXPECT_TRUE(stage.shows("K7QX2M"));
  EXPECT_TRUE(stage.shows("Waiting for parent to complete enrollment..."));
  EXPECT_FALSE(stage.shows("Initializing enrollment..."));

  stage.click("Cancel");
  EXPECT_TRUE(stage.shows("Start Enrollment"));
  EXPECT_FALSE(stage.shows("K7QX2M"));
}

TEST(Window, the_home_screen_appears_when_a_parent_has_finished) {
  UiStage stage({.stored = asNewChild()});
  auto& http = stage.application.machine.http;
  http.answer("POST", "/enrollment/init", 200, initAnswer);
  stage.click("Start Enrollment");
  http.answer("GET", "/enrollment/status/d-1", 200,
              R"({"status":"completed","device_id":"d-1","doh_endpoint":"https://dns.example/d1"})");
  stage.advance(5s);
  EXPECT_TRUE(stage.shows("Your internet is being monitored for safety"));
  EXPECT_FALSE(stage.shows("K7QX2M"));
}

class AlertTest : public testing::TestWithParam<Qt::Key> {};

TEST_P(AlertTest, is_answered_by_keyboard_and_returns_the_focus) {
  UiStage stage({.stored = asNewChild()});
  stage.application.machine.http.answer("POST", "/enrollment/init", 500, R"({"error":"Busy, try later"})");
  stage.press(Qt::Key_Return);
  EXPECT_TRUE(stage.shows("Error"));
  EXPECT_TRUE(stage.shows("Busy, try later"));
  EXPECT_EQ(stage.focusedName(), "OK");

  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "OK") << "the keyboard left the alert";

  stage.press(GetParam());
  EXPECT_FALSE(stage.shows("Busy, try later"));
  EXPECT_FALSE(stage.application.screen<ChildEnrollmentView>().errorAlert.isShown());
  EXPECT_EQ(stage.focusedName(), "Start Enrollment");
}

INSTANTIATE_TEST_SUITE_P(Keys, AlertTest, testing::Values(Qt::Key_Escape, Qt::Key_Return, Qt::Key_Space));

TEST(Window, texts_of_the_service_are_shown_as_plain_text) {
  UiStage stage({.stored = asNewChild()});
  stage.application.machine.http.answer("POST", "/enrollment/init", 500,
                                        R"({"error":"<b>bold</b> <img src=x>"})");
  stage.press(Qt::Key_Return);
  auto* const message = stage.find("<b>bold</b> <img src=x>");
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->property("textFormat").toInt(), 0);
}

TEST(Window, the_settings_open_and_close_over_the_home_screen) {
  UiStage stage({.stored = asEnrolledChild()});
  openSettings(stage);
  EXPECT_TRUE(stage.application.screen<ChildHomeView>().showSettings());
  stage.click("Done");
  EXPECT_FALSE(stage.application.screen<ChildHomeView>().showSettings());
  EXPECT_FALSE(stage.shows("Device Information"));

  openSettings(stage);
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(stage.application.screen<ChildHomeView>().showSettings());
  EXPECT_FALSE(stage.shows("Device Information"));
}

TEST(Window, the_focus_stays_inside_a_sheet) {
  UiStage stage({.stored = asEnrolledChild()});
  openSettings(stage);
  for (int i = 0; i < 12; ++i) {
    stage.press(Qt::Key_Tab);
    ASSERT_NE(stage.focused(), nullptr);
    bool inSheet = false;
    for (auto* above = stage.focused(); above; above = above->parentItem()) {
      inSheet = inSheet || above->inherits("QQuickPopupItem");
    }
    EXPECT_TRUE(inSheet) << stage.focusedName().toStdString();
  }
}

TEST(Window, a_reset_is_confirmed_or_cancelled) {
  UiStage stage({.stored = asEnrolledChild(), .size = {820, 1180}});
  openSettings(stage);
  stage.click("Reset Enrollment");
  EXPECT_TRUE(stage.shows("Reset Enrollment?"));
  EXPECT_EQ(stage.focusedName(), "Cancel");
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(stage.shows("Reset Enrollment?"));
  EXPECT_TRUE(stage.application.child().isEnrolled());
  EXPECT_TRUE(stage.shows("Device Information")) << "Escape closed the sheet under the alert too";

  stage.click("Reset Enrollment");
  stage.press(Qt::Key_Return);
  EXPECT_TRUE(stage.application.child().isEnrolled()) << "Return is not the answer that destroys";
  stage.click("Reset Enrollment");
  stage.click("Reset");
  EXPECT_FALSE(stage.application.child().isEnrolled());
  EXPECT_TRUE(stage.shows("Start Enrollment"));
  EXPECT_FALSE(stage.shows("Device Information"));
}

TEST(Window, the_endpoint_is_copied) {
  UiStage stage({.stored = asEnrolledChild("https://dns.example/d7"), .size = {820, 1180}});
  openSettings(stage);
  stage.click("Copy DoH Endpoint");
  EXPECT_EQ(stage.application.machine.clipboard.string(), "https://dns.example/d7");
}

TEST(Window, the_simulated_permission_says_that_it_is_one_and_forwards_the_answer) {
  UiStage stage({.stored = asEnrolledChild()});
  std::vector<bool> answers;
  stage.permissionPrompt.ask([&](bool allowed) { answers.push_back(allowed); });
  stage.settle();
  EXPECT_TRUE(stage.shows("Simulation"));
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(answers, std::vector<bool>{false});
  stage.permissionPrompt.ask([&](bool allowed) { answers.push_back(allowed); });
  stage.settle();
  stage.press(Qt::Key_Return);
  EXPECT_EQ(answers, (std::vector<bool>{false, true}));
  EXPECT_FALSE(stage.shows("Simulation"));
}

QRectF areaOfSettings(QSize window) {
  UiStage stage({.stored = asEnrolledChild(), .size = window});
  stage.click("Settings");
  for (auto* item = stage.find("Device Information"); item; item = item->parentItem()) {
    if (item->inherits("QQuickPopupItem")) {
      return {item->position(), item->size()};
    }
  }
  return {};
}

TEST(Window, a_sheet_is_a_page_in_a_narrow_window_and_a_card_in_a_wide_one) {
  EXPECT_EQ(areaOfSettings({390, 844}), QRectF(0, 0, 390, 844));
  const QRectF card = areaOfSettings({1280, 800});
  EXPECT_EQ(card.width(), 640);
  EXPECT_EQ(card.center().x(), 640);
  EXPECT_LT(card.height(), 800);
}

// Every control has a name, a role and a target of 44 points, at every text size.
class AccessibilityTest : public testing::TestWithParam<double> {
 protected:
  static void check(const QQuickItem& item) {
    if (!item.isVisible() || item.opacity() == 0) {
      return;
    }
    if (isButton(item)) {
      auto* const accessible = QAccessible::queryAccessibleInterface(const_cast<QQuickItem*>(&item));
      ASSERT_NE(accessible, nullptr);
      const auto name = accessible->text(QAccessible::Name).toStdString();
      EXPECT_FALSE(name.empty());
      EXPECT_NE(accessible->role(), QAccessible::NoRole) << name;
      EXPECT_NE(accessible->role(), QAccessible::Client) << name;
      EXPECT_GE(item.width(), 44) << name;
      EXPECT_GE(item.height(), 44) << name;
      EXPECT_TRUE(item.activeFocusOnTab()) << name;
      ++checked;
    }
    for (const auto* const child : item.childItems()) {
      check(*child);
    }
  }
  // No text is wider or higher than its room.
  static void checkText(const QQuickItem& item) {
    if (!item.isVisible()) {
      return;
    }
    if (item.inherits("QQuickText")) {
      const auto text = item.property("text").toString().toStdString();
      EXPECT_FALSE(item.property("truncated").toBool()) << text;
      EXPECT_LE(item.property("contentWidth").toDouble(), item.width() + 0.5) << text;
      EXPECT_GE(item.mapToScene(QPointF(0, 0)).x(), 0) << text;
      EXPECT_LE(item.mapToScene(QPointF(item.property("contentWidth").toDouble(), 0)).x(),
                item.window()->width())
          << text;
    }
    for (const auto* const child : item.childItems()) {
      checkText(*child);
    }
  }
  static inline int checked = 0;
};

TEST_P(AccessibilityTest, holds_for_every_screen) {
  checked = 0;
  for (const auto& stored : {StoredSettings(), asNewChild(), asEnrolledChild()}) {
    UiStage stage(
        {.stored = stored, .size = {360, 780}, .desktop = {.dark = false, .textScale = GetParam()}});
    check(*stage.window().contentItem());
    checkText(*stage.window().contentItem());
  }
  UiStage stage(
      {.stored = asEnrolledChild(), .size = {360, 780}, .desktop = {.dark = false, .textScale = GetParam()}});
  stage.application.screen<ChildHomeView>().showSettings = true;
  stage.settle();
  check(*stage.window().contentItem());
  checkText(*stage.window().contentItem());
  EXPECT_GE(checked, 10);
}

INSTANTIATE_TEST_SUITE_P(TextScales, AccessibilityTest, testing::Values(1.0, 1.5, 2.0));

TEST(Window, pictures_of_the_light_and_the_dark_look_differ) {
  UiStage stage({.desktop = {.dark = true}});
  const QImage dark = stage.picture();
  stage.style.setOverrideUserInterfaceStyle(UserInterfaceStyle::light);
  const QImage light = stage.picture();
  EXPECT_LT(qGray(dark.pixel(5, 800)), 80);
  EXPECT_GT(qGray(light.pixel(5, 800)), 200);
}

}  // namespace
}  // namespace quillmar::ui
