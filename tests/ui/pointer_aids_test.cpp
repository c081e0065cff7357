#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <algorithm>
#include <chrono>

#include "testing/ui/parent_stage.h"
#include "tests/ui/support/scene_walk.h"
#include "ui/items/press_area_item.h"

// Aids for a person with a mouse: tooltips and scroll bars.
namespace quillmar::ui {
namespace {

struct Tips : testing::Test {
  Tips() { showFamily(stage); }

  UiStage stage{{.stored = signedInParent()}};
};

TEST_F(Tips, tell_what_a_symbol_does_and_by_which_key) {
  EXPECT_FALSE(stage.shows("Refresh (F5)"));
  stage.pointAt(middleOf(*stage.control("Refresh")));
  stage.settle();
  EXPECT_TRUE(stage.shows("Refresh (F5)"));
  stage.pointAt(middleOf(*stage.control("Menu")));
  stage.settle();
  EXPECT_FALSE(stage.shows("Refresh (F5)"));
  EXPECT_TRUE(stage.shows("Menu"));
}

TEST_F(Tips, wait_until_the_pointer_rests) {
  stage.pointAt({200, 400});
  stage.settle();
  QTest::mouseMove(&stage.window(), middleOf(*stage.control("Refresh")));
  stage.step(std::chrono::milliseconds(300));
  EXPECT_FALSE(stage.shows("Refresh (F5)"));
}

TEST_F(Tips, go_with_the_pointer) {
  stage.pointAt(middleOf(*stage.control("Refresh")));
  stage.settle();
  stage.pointAt({200, 400});
  stage.settle();
  EXPECT_FALSE(stage.shows("Refresh (F5)"));
}

TEST_F(Tips, go_with_a_press) {
  stage.pointAt(middleOf(*stage.control("Find")));
  stage.settle();
  ASSERT_TRUE(stage.shows("Find (Ctrl+F)"));
  stage.click("Find");
  stage.pointAt({200, 400});
  stage.settle();
  EXPECT_FALSE(stage.shows("Find (Ctrl+F)"));
}

TEST_F(Tips, appear_for_the_keyboard_too) {
  stage.focusOn("Refresh");
  stage.settle();
  EXPECT_TRUE(stage.shows("Refresh (F5)"));
}

TEST_F(Tips, stay_in_the_window) {
  QQuickItem* symbol = nullptr;
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    if (item.property("tip").toString() == "Add Another Child") {
      symbol = const_cast<QQuickItem*>(&item);
    }
  });
  ASSERT_NE(symbol, nullptr);
  stage.pointAt(middleOf(*symbol));
  stage.settle();
  const auto* const words = stage.find("Add Another Child (Ctrl+N)");
  ASSERT_NE(words, nullptr);
  const QRectF place = words->mapRectToScene({0, 0, words->width(), words->height()});
  EXPECT_TRUE(QRectF(QPointF(), QSizeF(stage.window().size())).contains(place));
}

TEST_F(Tips, a_button_with_a_word_has_none) {
  openSettings(stage);
  stage.pointAt(middleOf(*stage.control("Done")));
  stage.settle();
  EXPECT_FALSE(stage.shows("Done (Alt+Left)"));
}

TEST_F(Tips, are_no_obstacle_for_the_pointer) {
  stage.pointAt(middleOf(*stage.control("Refresh")));
  stage.settle();
  const auto* const tip = stage.find("Refresh (F5)");
  ASSERT_NE(tip, nullptr);
  const QPoint place = middleOf(*tip);
  EXPECT_GT(place.y(), middleOf(*stage.control("Refresh")).y());
  EXPECT_FALSE(tip->parentItem()->isEnabled());
}

// A button that is at work hides its word behind a spinner.
bool hasAWord(const QQuickItem& control) {
  const auto parts = control.childItems();
  return std::ranges::any_of(parts, [](const QQuickItem* part) { return isText(*part) || hasAWord(*part); });
}

TEST(AllScenes, explain_each_symbol_that_can_be_pressed) {
  int seen = 0;
  for (const Shot& shot : scenes()) {
    UiStage stage({.stored = shot.stored});
    play(stage, shot);
    forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
      if (qobject_cast<const PressAreaItem*>(&item) && !hasAWord(item)) {
        ++seen;
        EXPECT_NE(item.property("tip").toString().toStdString(), "")
            << accessibleName(item).toStdString() << " in " << shot.name;
      }
    });
  }
  EXPECT_GT(seen, 50);
}

// The one that is shown within this item, or null.
QQuickItem* scrollBarIn(const QQuickItem& shown) {
  QQuickItem* bar = nullptr;
  forEachShown(shown, [&](const QQuickItem& item) {
    if (item.property("thumb").isValid()) {
      bar = const_cast<QQuickItem*>(&item);
    }
  });
  return bar;
}

struct ScrollBar : testing::Test {
  ScrollBar() {
    openChild(stage);
    page = around(stage.control("Mia's phone"), "QQuickFlickable");
    bar = scrollBarIn(*page->parentItem());
  }

  double scrolled() const { return page->property("contentY").toDouble(); }
  double longest() const { return page->property("contentHeight").toDouble() - page->height(); }
  double thumb() const { return bar->property("thumb").toDouble(); }
  // In the bar's coordinates.
  QPoint placeOf(double y) const { return bar->mapToScene({bar->width() / 2, y}).toPoint(); }

  UiStage stage{{.stored = signedInParent()}};
  QQuickItem* page = nullptr;
  QQuickItem* bar = nullptr;
};

TEST_F(ScrollBar, is_dragged_by_mouse) {
  ASSERT_NE(bar, nullptr);
  ASSERT_GT(longest(), 100);
  const int half = static_cast<int>((bar->height() - thumb()) / 2);
  stage.drag(UiStage::Pointer::mouse, placeOf(thumb() / 2), {0, half});
  EXPECT_NEAR(scrolled(), longest() / 2, longest() * 0.03);
  stage.drag(UiStage::Pointer::mouse, placeOf(thumb() / 2 + half),
             {0, stage.window().height() - placeOf(thumb() / 2 + half).y() - 2});
  EXPECT_NEAR(scrolled(), longest(), 1);
}

TEST_F(ScrollBar, scrolls_a_page_at_a_press_beside_the_thumb) {
  stage.clickAt(placeOf(bar->height() - 8));
  EXPECT_NEAR(scrolled(), std::min(longest(), 0.9 * page->height()), 1);
  stage.clickAt(placeOf(4));
  EXPECT_EQ(scrolled(), 0);
}

TEST_F(ScrollBar, covers_nothing) {
  const double end = bar->mapToScene({0, 0}).x();
  forEachShown(*page, [&](const QQuickItem& item) {
    if (qobject_cast<const PressAreaItem*>(&item)) {
      EXPECT_LE(item.mapToScene({item.width(), 0}).x(), end) << accessibleName(item).toStdString();
    }
  });
}

TEST_F(ScrollBar, leaves_the_keyboard_alone) {
  EXPECT_FALSE(bar->activeFocusOnTab());
  stage.focusOn("Done");
  stage.clickAt(placeOf(bar->height() - 8));
  EXPECT_EQ(stage.focusedName(), "Done");
}

TEST_F(ScrollBar, lets_a_finger_scroll_the_page) {
  stage.drag(UiStage::Pointer::finger, placeOf(bar->height() / 2), {0, -200});
  EXPECT_GT(scrolled(), 50);
}

TEST_F(ScrollBar, is_wide_under_the_pointer_and_hidden_at_rest) {
  const auto* const drawn = bar->childItems().first();
  stage.pointAt(placeOf(thumb() / 2));
  EXPECT_EQ(drawn->width(), 8);
  EXPECT_GT(drawn->opacity(), 0.3);
  stage.pointAt({200, 400});
  EXPECT_EQ(drawn->width(), 4);
  EXPECT_EQ(drawn->opacity(), 0);
}

// What lies over a window that is too low for it.
struct LowWindow : testing::Test {
  LowWindow() {
    showFamily(stage);
    // Lower than a person can make it, so that even a short menu does not fit.
    stage.window().resize(360, 200);
    stage.settle();
  }

  // Drags the scroll bar of what this text belongs to, and returns how much of the way that scrolled.
  double draggedBy(const QString& text) {
    auto* const list = around(stage.find(text), "QQuickFlickable");
    const auto* const bar = scrollBarIn(frontOf(stage));
    if (!list || !bar) {
      ADD_FAILURE() << "there is no scroll bar beside " << text.toStdString();
      return 0;
    }
    const double thumb = bar->property("thumb").toDouble();
    const int way = static_cast<int>(bar->height() - thumb);
    stage.drag(UiStage::Pointer::mouse, bar->mapToScene({bar->width() / 2, thumb / 2}).toPoint(), {0, way});
    EXPECT_GT(bar->childItems().first()->opacity(), 0.3) << "it is seen while it is held";
    return list->property("contentY").toDouble() /
           (list->property("contentHeight").toDouble() - list->height());
  }

  UiStage stage{{.stored = signedInParent()}};
};

TEST_F(LowWindow, has_a_scroll_bar_in_the_list_of_keys) {
  stage.press(Qt::Key_F1);
  stage.settle();
  EXPECT_NEAR(draggedBy("Refresh, or try again"), 1, 0.05);
}

TEST_F(LowWindow, has_a_scroll_bar_in_a_menu) {
  stage.click("AM");
  stage.settle();
  EXPECT_NEAR(draggedBy("Settings"), 1, 0.05);
  EXPECT_TRUE(stage.shows("Logout")) << "the menu stays open";
}

TEST_F(ScrollBar, is_absent_where_everything_fits) {
  stage.press(Qt::Key_F1);
  stage.settle();
  EXPECT_TRUE(stage.shows("Keys"));
  forEachShown(frontOf(stage), [&](const QQuickItem& item) {
    EXPECT_FALSE(item.property("thumb").isValid()) << "a bar in a list of " << item.height();
  });
}

}  // namespace
}  // namespace quillmar::ui
