#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QWindow>
#include <vector>

#include "tests/contracts/clipboard_contract.h"
#include "tests/contracts/dispatch_contract.h"
#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/qt_clipboard.h"
#include "ui/adapters/qt_dispatch.h"
#include "ui/adapters/qt_scene_phase.h"
#include "ui/adapters/qt_window_style.h"

namespace quillmar {
namespace {

class QtHarness final : public DispatchHarness {
 public:
  Dispatch& dispatch() override { return dispatch_; }
  bool runUntil(const std::function<bool()>& done) override {
    constexpr qint64 farTooLong = 20'000;
    QElapsedTimer elapsed;
    elapsed.start();
    while (!done()) {
      if (elapsed.hasExpired(farTooLong)) {
        return false;
      }
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, static_cast<int>(farTooLong));
    }
    return true;
  }
  void stall(Duration duration) override {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!elapsed.hasExpired(duration.count())) {
    }
  }

 private:
  ui::QtDispatch dispatch_;
};

INSTANTIATE_TEST_SUITE_P(Qt, DispatchContract, testing::Values(factory<DispatchHarness, QtHarness>("Qt")));
INSTANTIATE_TEST_SUITE_P(Qt, ClipboardContract, testing::Values(factory<Clipboard, ui::QtClipboard>("Qt")));

}  // namespace
}  // namespace quillmar

namespace quillmar::ui {
namespace {

TEST(QtWindowStyle, follows_the_desktop_until_a_look_is_forced) {
  DesktopSettings desktop;
  QtWindowStyle style(desktop);
  desktop.setWishes({.dark = true});
  EXPECT_TRUE(style.isDark());
  desktop.setWishes({.dark = false});
  EXPECT_FALSE(style.isDark());

  style.setOverrideUserInterfaceStyle(UserInterfaceStyle::dark);
  EXPECT_TRUE(style.isDark());
  desktop.setWishes({.dark = true});
  style.setOverrideUserInterfaceStyle(UserInterfaceStyle::light);
  EXPECT_FALSE(style.isDark());
  style.setOverrideUserInterfaceStyle(UserInterfaceStyle::unspecified);
  EXPECT_TRUE(style.isDark());
}

TEST(QtWindowStyle, reports_changes_only) {
  DesktopSettings desktop;
  QtWindowStyle style(desktop);
  QSignalSpy changed(&style, &QtWindowStyle::changed);
  style.setOverrideUserInterfaceStyle(UserInterfaceStyle::dark);
  EXPECT_EQ(changed.count(), 1);
  style.setOverrideUserInterfaceStyle(UserInterfaceStyle::dark);
  EXPECT_EQ(changed.count(), 1);
  desktop.setWishes({.dark = true});
  EXPECT_EQ(changed.count(), 2);
}

TEST(QtScenePhase, a_visible_window_is_active_and_a_hidden_one_in_the_background) {
  QWindow window;
  std::vector<WindowPhase> told;
  const QtScenePhase phases(window, [&](WindowPhase phase) { told.push_back(phase); });
  EXPECT_TRUE(told.empty());
  QCoreApplication::processEvents();
  EXPECT_EQ(told, (std::vector{WindowPhase::background}));
  window.show();
  EXPECT_EQ(told.back(), WindowPhase::active);
  window.showMaximized();
  EXPECT_EQ(told.size(), 2u);
  window.showMinimized();
  EXPECT_EQ(told.back(), WindowPhase::background);
  window.showNormal();
  EXPECT_EQ(told.back(), WindowPhase::active);
  window.close();
  EXPECT_EQ(told.back(), WindowPhase::background);
  EXPECT_EQ(told.size(), 5u);
}

}  // namespace
}  // namespace quillmar::ui
