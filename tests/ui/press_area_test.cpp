#include <gtest/gtest.h>

#include <QPointingDevice>
#include <QQuickWindow>
#include <QTest>
#include <memory>

#include "ui/items/press_area_item.h"

namespace quillmar::ui {
namespace {

constexpr QPoint inside(50, 20);
constexpr QPoint outside(250, 20);

class PressAreaTest : public testing::Test {
 protected:
  PressAreaTest() {
    window.resize(300, 100);
    area.setParentItem(window.contentItem());
    area.setSize({100, 40});
    area.setFocusPolicy(Qt::StrongFocus);
    area.setHoverEnabled(true);
    QObject::connect(&area, &PressAreaItem::clicked, [this] { ++clicks; });
    window.show();
    window.requestActivate();
    QCoreApplication::processEvents();
  }

  QQuickWindow window;
  PressAreaItem area;
  int clicks = 0;
};

TEST_F(PressAreaTest, is_clicked_when_released_where_it_was_pressed) {
  QTest::mousePress(&window, Qt::LeftButton, {}, inside);
  EXPECT_TRUE(area.isDown());
  EXPECT_EQ(clicks, 0);
  QTest::mouseRelease(&window, Qt::LeftButton, {}, inside);
  EXPECT_FALSE(area.isDown());
  EXPECT_EQ(clicks, 1);
}

// Two touches that are quicker than a double tap.
TEST_F(PressAreaTest, is_clicked_by_each_of_two_quick_touches) {
  const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
  for (int i = 0; i < 2; ++i) {
    QTest::touchEvent(&window, screen.get()).press(0, inside);
    QTest::touchEvent(&window, screen.get()).release(0, inside);
  }
  EXPECT_EQ(clicks, 2);
}

TEST_F(PressAreaTest, is_not_clicked_when_the_pointer_has_left_it) {
  QTest::mousePress(&window, Qt::LeftButton, {}, inside);
  QTest::mouseMove(&window, outside);
  EXPECT_FALSE(area.isDown());
  QTest::mouseRelease(&window, Qt::LeftButton, {}, outside);
  EXPECT_EQ(clicks, 0);
}

TEST_F(PressAreaTest, ignores_other_buttons_and_presses_while_disabled) {
  QTest::mouseClick(&window, Qt::RightButton, {}, inside);
  area.setEnabled(false);
  QTest::mouseClick(&window, Qt::LeftButton, {}, inside);
  area.accessiblePressAction();
  EXPECT_EQ(clicks, 0);
}

TEST_F(PressAreaTest, is_clicked_by_releasing_space_and_by_return) {
  area.forceActiveFocus(Qt::TabFocusReason);
  QTest::keyPress(&window, Qt::Key_Space);
  EXPECT_TRUE(area.isDown());
  EXPECT_EQ(clicks, 0);
  QTest::keyRelease(&window, Qt::Key_Space);
  EXPECT_FALSE(area.isDown());
  EXPECT_EQ(clicks, 1);
  QTest::keyClick(&window, Qt::Key_Return);
  QTest::keyClick(&window, Qt::Key_Enter);
  EXPECT_EQ(clicks, 3);
}

TEST_F(PressAreaTest, is_released_without_a_click_when_it_loses_the_focus_or_is_disabled) {
  area.forceActiveFocus(Qt::TabFocusReason);
  QTest::keyPress(&window, Qt::Key_Space);
  area.setFocus(false);
  EXPECT_FALSE(area.isDown());
  QTest::mousePress(&window, Qt::LeftButton, {}, inside);
  EXPECT_TRUE(area.isDown());
  area.setEnabled(false);
  EXPECT_FALSE(area.isDown());
  QTest::mouseRelease(&window, Qt::LeftButton, {}, inside);
  EXPECT_EQ(clicks, 0);
}

TEST_F(PressAreaTest, shows_the_focus_only_if_the_keyboard_brought_it) {
  QTest::mouseClick(&window, Qt::LeftButton, {}, inside);
  EXPECT_TRUE(area.hasActiveFocus());
  EXPECT_FALSE(area.hasVisualFocus());
  area.setFocus(false);
  area.forceActiveFocus(Qt::BacktabFocusReason);
  EXPECT_TRUE(area.hasVisualFocus());
  area.setFocus(false);
  EXPECT_FALSE(area.hasVisualFocus());
}

TEST_F(PressAreaTest, takes_no_focus_if_its_policy_is_none) {
  area.setFocusPolicy(Qt::NoFocus);
  EXPECT_FALSE(area.activeFocusOnTab());
  QTest::mouseClick(&window, Qt::LeftButton, {}, inside);
  EXPECT_FALSE(area.hasActiveFocus());
  EXPECT_EQ(clicks, 1);
}

TEST_F(PressAreaTest, is_hovered_under_the_pointer_but_not_while_disabled) {
  QTest::mouseMove(&window, inside);
  QCoreApplication::processEvents();
  EXPECT_TRUE(area.isHovered());
  EXPECT_EQ(area.cursor().shape(), Qt::PointingHandCursor);
  area.setEnabled(false);
  EXPECT_FALSE(area.isHovered());
  EXPECT_EQ(area.cursor().shape(), Qt::ArrowCursor);
}

TEST_F(PressAreaTest, lays_out_its_content_within_the_padding_and_its_background_behind_all) {
  QQuickItem content;
  QQuickItem ground;
  content.setImplicitWidth(30);
  area.setContentItem(&content);
  area.setBackground(&ground);
  area.setPadding(4);
  area.setLeftPadding(10);
  EXPECT_EQ(area.implicitContentWidth(), 30);
  EXPECT_EQ(QRectF(content.position(), content.size()), QRectF(10, 4, 86, 32));
  area.setSize({200, 60});
  EXPECT_EQ(QRectF(content.position(), content.size()), QRectF(10, 4, 186, 52));
  EXPECT_EQ(ground.size(), QSizeF(200, 60));
  EXPECT_LT(ground.z(), content.z());
}

}  // namespace
}  // namespace quillmar::ui
