#include "ui/window_geometry.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "platform/common/state_file.h"
#include "testing/temporary_directory.h"
#include "testing/ui/ui_stage.h"

namespace quillmar::ui {
namespace {

const QList<QRect> twoScreens{{0, 0, 1920, 1080}, {1920, 0, 1280, 1024}};

WindowGeometry at(QPoint place, QSize size) { return {.place = place, .size = size}; }

TEST(FittedGeometry, is_one_column_at_the_first_start) {
  const auto first = fitted(std::nullopt, twoScreens);
  EXPECT_EQ(first.size, QSize(460, 860));
  EXPECT_EQ(first.place, std::nullopt);
  EXPECT_FALSE(first.isMaximized);
}

TEST(FittedGeometry, is_no_larger_than_the_screen) {
  EXPECT_EQ(fitted(std::nullopt, {{0, 0, 1366, 700}}).size, QSize(460, 700));
  EXPECT_EQ(fitted(WindowGeometry{{}, {3000, 2000}, false}, twoScreens).size, QSize(1920, 1080));
  EXPECT_EQ(fitted(at({2000, 10}, {3000, 2000}), {{1920, 0, 1280, 1024}}), at({1920, 0}, {1280, 1024}));
}

TEST(FittedGeometry, stays_where_it_was) {
  EXPECT_EQ(fitted(at({100, 50}, {800, 600}), twoScreens), at({100, 50}, {800, 600}));
  EXPECT_EQ(fitted(at({2000, 50}, {800, 600}), twoScreens), at({2000, 50}, {800, 600}));
}

TEST(FittedGeometry, is_wholly_on_the_screen_with_most_of_it) {
  EXPECT_EQ(fitted(at({-100, -20}, {800, 600}), twoScreens), at({0, 0}, {800, 600}));
  EXPECT_EQ(fitted(at({1800, 900}, {800, 600}), twoScreens), at({1920, 424}, {800, 600}));
}

TEST(FittedGeometry, has_no_place_outside_all_screens) {
  for (const QPoint place : {QPoint(5000, 50), QPoint(-900, 0), QPoint(0, 1080), QPoint(100000, -100000)}) {
    const auto there = fitted(at(place, {800, 600}), twoScreens);
    EXPECT_EQ(there.place, std::nullopt) << place.x();
    EXPECT_EQ(there.size, QSize(800, 600));
  }
}

TEST(FittedGeometry, is_that_of_the_last_time_without_any_screen) {
  EXPECT_EQ(fitted(at({1, 2}, {800, 600}), {}), at({1, 2}, {800, 600}));
}

struct WindowState : testing::Test {
  TemporaryDirectory folder;
  const std::filesystem::path path = folder.path() / "window.state";

  void put(const std::string& content) { std::ofstream(path) << content; }
  std::optional<WindowGeometry> read() const { return readGeometry(StateFile(path)); }
};

TEST_F(WindowState, is_that_of_its_rows) {
  put("window.width=800\nwindow.height=600\nwindow.x=-5\nwindow.y=7\nwindow.maximized=yes\n");
  EXPECT_EQ(read(), (WindowGeometry{QPoint(-5, 7), QSize(800, 600), true}));
}

TEST_F(WindowState, has_no_place_with_half_of_one) {
  put("window.width=800\nwindow.height=600\nwindow.x=-5\n");
  EXPECT_EQ(read(), (WindowGeometry{{}, QSize(800, 600), false}));
}

TEST_F(WindowState, is_none_without_a_size_that_a_screen_could_have) {
  for (const char* const content :
       {"", "rubbish", "window.width=800\n", "window.width=0\nwindow.height=600\n",
        "window.width=-800\nwindow.height=600\n", "window.width=99999999999999999999\nwindow.height=600\n",
        "window.width=800px\nwindow.height=600\n", "window.width=200000\nwindow.height=600\n",
        "window.width=1e3\nwindow.height=600\n"}) {
    put(content);
    EXPECT_EQ(read(), std::nullopt) << content;
  }
}

TEST_F(WindowState, is_remembered_by_the_window) {
  {
    UiStage stage({.stateFile = path});
    EXPECT_EQ(stage.window().width(), 460);
    stage.window().setGeometry(20, 30, 500, 550);
    stage.settle();
  }
  UiStage stage({.stateFile = path});
  EXPECT_EQ(stage.window().geometry(), QRect(20, 30, 500, 550));
}

TEST_F(WindowState, is_remembered_when_the_window_is_closed) {
  UiStage stage({.stateFile = path});
  stage.window().resize(500, 550);
  stage.settle();
  stage.window().close();
  ASSERT_TRUE(read());
  EXPECT_EQ(read()->size, QSize(500, 550));
}

TEST_F(WindowState, leaves_the_rows_of_others_alone) {
  put("notifications=off\n");
  { const UiStage stage({.stateFile = path}); }
  EXPECT_EQ(StateFile(path).value("notifications"), "off");
}

TEST_F(WindowState, of_a_maximised_window_keeps_the_size_to_which_it_returns) {
  {
    UiStage stage({.stateFile = path});
    stage.window().resize(500, 550);
    stage.settle();
    stage.window().close();
    stage.window().showMaximized();
    stage.settle();
  }
  ASSERT_TRUE(read());
  EXPECT_EQ(read()->size, QSize(500, 550));
  EXPECT_TRUE(read()->isMaximized);
  const UiStage stage({.stateFile = path});
  EXPECT_EQ(stage.window().visibility(), QWindow::Maximized);
}

TEST_F(WindowState, is_the_first_one_if_the_file_is_rubbish) {
  put("window.width=banana\n\x01\xFF\nwindow.height=\n=\n");
  const UiStage stage({.stateFile = path});
  EXPECT_EQ(stage.window().width(), 460);
}

TEST_F(WindowState, that_can_not_be_kept_is_no_obstacle) {
  UiStage stage({.stateFile = "/proc/quillmar/window.state"});
  EXPECT_EQ(stage.window().width(), 460);
  EXPECT_TRUE(stage.window().isVisible());
}

// For example after a screen was unplugged.
TEST_F(WindowState, off_every_screen_brings_the_window_back) {
  put("window.width=500\nwindow.height=550\nwindow.x=90000\nwindow.y=90000\n");
  const UiStage stage({.stateFile = path});
  EXPECT_TRUE(stage.window().screen()->geometry().intersects(stage.window().geometry()));
}

}  // namespace
}  // namespace quillmar::ui
