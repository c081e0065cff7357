#include <gtest/gtest.h>

#include <QColor>
#include <QHash>
#include <QImage>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "presentation/colors.h"
#include "testing/ui/parent_stage.h"
#include "tests/ui/support/scene_walk.h"

// Text and edges have enough contrast for weak eyes: for the theme's colours, and on the backgrounds where
// screens use them.
namespace quillmar::ui {
namespace {

constexpr double forLetters = 4.5;
constexpr double forEdges = 3;

double linear(double part) { return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); }

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax(luminance(one), luminance(other));
  return (lighter + 0.05) / (darker + 0.05);
}

// The colour that results when it is blended over its background.
QColor over(const QColor& color, double opacity, const QColor& ground) {
  const auto mixed = [&](float top, float bottom) {
    const auto share = static_cast<float>(color.alphaF() * opacity);
    return share * top + (1 - share) * bottom;
  };
  return QColor::fromRgbF(mixed(color.redF(), ground.redF()), mixed(color.greenF(), ground.greenF()),
                          mixed(color.blueF(), ground.blueF()));
}

// The part of an item that lies in the window and in the clipping items around it.
QRect shownRect(const QQuickItem& item, const QSize& window) {
  QRectF rect = item.mapRectToScene({0, 0, item.width(), item.height()}).intersected(QRectF({}, window));
  for (const auto* above = item.parentItem(); above; above = above->parentItem()) {
    if (above->clip()) {
      rect = rect.intersected(above->mapRectToScene({0, 0, above->width(), above->height()}));
    }
  }
  return rect.toAlignedRect().intersected({{}, window});
}

// The background is the most frequent colour around a text.
QColor groundOf(const QRect& place, const QImage& picture) {
  QHash<QRgb, int> counts;
  for (int y = place.top(); y <= place.bottom(); ++y) {
    for (int x = place.left(); x <= place.right(); ++x) {
      ++counts[picture.pixel(x, y)];
    }
  }
  const auto most = std::ranges::max_element(counts.begin(), counts.end());
  return QColor::fromRgb(most.key());
}

// Exceptions, whose colours are fixed: text on the children's colours, on the button with the
// gradient from brandBlue to brandBlueDark, and on what a swiped row uncovers. Also cards that are dimmed
// while they are loaded again.
bool isGiven(const QQuickItem& text, const QColor& ground) {
  static const QColor brandRed("#FF3B30");
  for (const auto* above = text.parentItem(); above; above = above->parentItem()) {
    const std::string kind = above->metaObject()->className();
    const bool isDimmed = kind.starts_with("DashboardCards") && shownOpacity(text) < 1;
    if (isDimmed || kind.starts_with("Avatar") || kind.starts_with("PrimaryButton") ||
        kind.starts_with("SwipeStrip")) {
      return true;
    }
  }
  return ground == brandRed && drawnAside(text) == 0;
}

// Whether it is covered by a bar over the end of the page, so that its own background can't be seen.
bool isCovered(const QQuickItem& text, const UiStage& stage) {
  constexpr double shadow = 20;
  const QRectF place = text.mapRectToScene(text.boundingRect()).adjusted(-shadow, -shadow, shadow, shadow);
  bool covered = false;
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    covered =
        covered || (std::string(item.metaObject()->className()).starts_with("AddedSites") &&
                    !item.isAncestorOf(&text) && item.mapRectToScene(item.boundingRect()).intersects(place));
  });
  return covered;
}

// Controls that are recognised by their edge: a text box, a switch, a checkbox, a selection card.
bool hasEdge(const QQuickItem& item) {
  return item.inherits("QQuickTextField") || item.inherits("QQuickSwitch") ||
         item.inherits("QQuickCheckBox") ||
         std::string(item.metaObject()->className()).starts_with("SelectionCard");
}

QColor edgeOf(const QQuickItem& item) {
  const auto* const border = item.property("border").value<QObject*>();
  if (!border || border->property("width").toDouble() < 1) {
    return Qt::transparent;
  }
  const auto color = border->property("color").value<QColor>();
  // A rectangle without an edge reports a black one of one point.
  return color == QColor(Qt::black) ? QColor(Qt::transparent) : color;
}

class ContrastTest : public testing::TestWithParam<std::tuple<Shot, bool>> {};

TEST_P(ContrastTest, of_text_is_enough_to_read) {
  const auto& [shot, dark] = GetParam();
  UiStage stage({.stored = shot.stored, .desktop = {.dark = dark}});
  play(stage, shot);
  const QImage picture = stage.picture();
  int texts = 0;
  forEachShown(frontOf(stage), [&](const QQuickItem& item) {
    const QRect place = shownRect(item, picture.size());
    if (!isText(item) || !item.isEnabled() || place.isEmpty() || isCovered(item, stage)) {
      return;
    }
    const QColor ground = groundOf(place, picture);
    if (isGiven(item, ground)) {
      return;
    }
    const QColor ink = over(item.property("color").value<QColor>(), shownOpacity(item), ground);
    EXPECT_GE(contrast(ink, ground), forLetters)
        << item.property("text").toString().left(40).toStdString() << ": " << ink.name().toStdString()
        << " on " << ground.name().toStdString();
    ++texts;
  });
  EXPECT_GT(texts, 0);
}

TEST_P(ContrastTest, of_edges_is_enough_to_see) {
  const auto& [shot, dark] = GetParam();
  UiStage stage({.stored = shot.stored, .desktop = {.dark = dark}});
  play(stage, shot);
  const QImage picture = stage.picture();
  constexpr int outside = 3;
  forEachShown(frontOf(stage), [&](const QQuickItem& control) {
    const QRect shown = shownRect(control, picture.size());
    if (!hasEdge(control) || !control.isEnabled() || shown.height() < control.height()) {
      return;
    }
    int edges = 0;
    forEachShown(control, [&](const QQuickItem& item) {
      const QColor edge = edgeOf(item);
      if (edge.alpha() == 0) {
        return;
      }
      const QRect place = shownRect(item, picture.size());
      const QColor ground = picture.pixelColor(std::max(place.left() - outside, 0), place.center().y());
      const QColor drawn = over(edge, shownOpacity(item), ground);
      EXPECT_GE(contrast(drawn, ground), forEdges)
          << accessibleName(control).toStdString() << ": " << drawn.name().toStdString() << " on "
          << ground.name().toStdString();
      ++edges;
    });
    EXPECT_GT(edges, 0) << accessibleName(control).toStdString();
  });
}

// The edge between a text box and the page or the card under it.
TEST(Contrast, of_the_themes_edge_is_enough_on_all_its_backgrounds) {
  for (const bool dark : {false, true}) {
    UiStage stage({.desktop = {.dark = dark}});
    QQmlComponent component(qmlEngine(&stage.window()));
    component.setData("import QtQml; import Quillmar; QtObject { property var theme: Theme }", {});
    const std::unique_ptr<QObject> holder(component.create());
    const auto* const theme = holder->property("theme").value<QObject*>();
    ASSERT_NE(theme, nullptr);
    for (const char* const ground : {"page", "card", "raised"}) {
      EXPECT_GE(contrast(theme->property("edge").value<QColor>(), theme->property(ground).value<QColor>()),
                forEdges)
          << ground << (dark ? " by night" : " by day");
    }
  }
}

// In the light look an edge marks the chosen tab.
TEST(Contrast, of_a_chosen_tabs_edge_in_the_light_look_is_enough_to_see) {
  UiStage stage({.stored = signedInParent(), .desktop = {.dark = false}});
  openChild(stage);
  const QImage picture = stage.picture();
  int edges = 0;
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    const auto* const ground = item.parentItem();
    const auto* const tabs = ground ? ground->parentItem() : nullptr;
    if (!tabs || !std::string(tabs->metaObject()->className()).starts_with("SegmentedTabs")) {
      return;
    }
    const QColor edge = edgeOf(item);
    if (edge.alpha() == 0) {
      return;
    }
    const QRect place = shownRect(item, picture.size());
    const QColor outside = picture.pixelColor(place.left() - 2, place.center().y());
    EXPECT_GE(contrast(over(edge, 1, outside), outside), forEdges);
    ++edges;
  });
  EXPECT_EQ(edges, 1);
}

TEST(Contrast, of_a_chosen_tab_in_the_dark_look_is_enough_for_its_shape_and_its_text) {
  const auto byNight = [](SchemeColor name) {
    const Color& color = colors(name).dark;
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue));
  };
  EXPECT_GE(contrast(byNight(SchemeColor::chosenTab), byNight(SchemeColor::card)), forEdges);
  EXPECT_GE(contrast(byNight(SchemeColor::text), byNight(SchemeColor::chosenTab)), forLetters);
}

INSTANTIATE_TEST_SUITE_P(Scenes, ContrastTest,
                         testing::Combine(testing::ValuesIn(scenes()), testing::Bool()));

}  // namespace
}  // namespace quillmar::ui
