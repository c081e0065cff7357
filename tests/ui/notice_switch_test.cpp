#include "ui/notice_switch.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QSize>

#include "child/child_home_view.h"
#include "platform/common/state_file.h"
#include "testing/temporary_directory.h"
#include "testing/ui/ui_stage.h"

// The switch of the notices outside the window.
namespace quillmar::ui {
namespace {

constexpr auto noticeSwitch = "Protection Changes";

struct NoticeSwitch : testing::Test {
  NoticeSwitch() { stage.click("Settings"); }

  bool isOn() { return isChecked(*stage.control(noticeSwitch)); }

  UiStage stage{{.stored = asEnrolledChild(), .size = {390, 1400}}};
};

TEST_F(NoticeSwitch, is_on_at_first_and_a_press_turns_it_off_and_on) {
  ASSERT_TRUE(isOn());
  stage.clickAt(middleOf(*stage.control(noticeSwitch)));
  EXPECT_FALSE(stage.notices.isOn());
  EXPECT_FALSE(isOn());
  stage.focusOn(noticeSwitch);
  stage.press(Qt::Key_Space);
  EXPECT_TRUE(stage.notices.isOn());
  EXPECT_TRUE(isOn());
}

TEST_F(NoticeSwitch, follows_its_model) {
  stage.notices.isOn = false;
  stage.settle();
  EXPECT_FALSE(isOn());
}

TEST_F(NoticeSwitch, a_screen_reader_turns_it_off) {
  auto* const accessible = QAccessible::queryAccessibleInterface(stage.control(noticeSwitch));
  ASSERT_NE(accessible, nullptr);
  EXPECT_EQ(accessible->role(), QAccessible::CheckBox);
  accessible->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
  stage.settle();
  EXPECT_FALSE(stage.notices.isOn());
}

TEST(KeptWish, is_on_at_first_and_survives_beside_the_windows_size) {
  const TemporaryDirectory directory;
  const StateFile file(directory.path() / "window.state");
  EXPECT_TRUE(wantsNotices(file));
  file.write({{"size", "400 500"}});
  keepWishForNotices(file, false);
  EXPECT_FALSE(wantsNotices(file));
  EXPECT_EQ(file.value("size"), "400 500");
  keepWishForNotices(file, true);
  EXPECT_TRUE(wantsNotices(file));
}

TEST(KeptWish, is_on_if_the_row_holds_something_else) {
  const TemporaryDirectory directory;
  const StateFile file(directory.path() / "window.state");
  file.write({{"notices", "perhaps"}});
  EXPECT_TRUE(wantsNotices(file));
}

}  // namespace
}  // namespace quillmar::ui
