#include <gtest/gtest.h>

#include <QFont>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QSet>
#include <algorithm>
#include <string>
#include <variant>

#include "tests/ui/support/scene_walk.h"
#include "ui/bridge/shown_text.h"

// At twice the text size, every word of our own texts is readable, and every site.
namespace quillmar::ui {
namespace {

constexpr double twice = 2;
constexpr double pixel = 1;

// Texts written by other people. They may be of any length, and may be elided.
class OutsideTexts {
 public:
  explicit OutsideTexts(const StoredSettings& stored) {
    for (const auto& [key, value] : stored) {
      if (const auto* const text = std::get_if<std::string>(&value)) {
        add(QString::fromStdString(*text));
      }
    }
  }
  void addBody(const std::string& body) {
    const auto document = QJsonDocument::fromJson(QByteArray::fromStdString(body));
    addValue(document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object()));
  }
  // True for such a text in any case, for the end of a host's name, and for the start of one, with an
  // ellipsis.
  bool has(const QString& shown) const {
    const QString wanted = shown.toCaseFolded();
    const bool isStart = wanted.endsWith(u'…') && wanted.size() > 1;
    return texts_.contains(wanted) || std::ranges::any_of(texts_, [&](const QString& text) {
             return text.endsWith(u'.' + wanted) || (isStart && text.startsWith(wanted.chopped(1)));
           });
  }

 private:
  void addValue(const QJsonValue& value) {
    if (value.isString()) {
      add(value.toString());
    }
    const auto members = value.isArray() ? value.toArray() : QJsonArray();
    std::ranges::for_each(members, [&](const QJsonValue& member) { addValue(member); });
    const auto object = value.toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
      addValue(entry.value());
    }
  }
  // A one-line row shows a space instead of a line break.
  void add(const QString& text) {
    const QString shown = shownText(text.toStdString()).toCaseFolded();
    texts_.insert(shown);
    texts_.insert(QString(shown).replace(u'\n', u' '));
  }

  QSet<QString> texts_;
};

// A site is read to its end, whoever wrote it.
bool isSite(const QString& text) {
  constexpr int longest = 40;
  static const QRegularExpression whole(QStringLiteral(R"(^[a-z0-9-]+(\.[a-z0-9-]+)+$)"));
  return text.size() <= longest && whole.match(text).hasMatch();
}

class LargeTextTest : public testing::TestWithParam<SizedScene> {
 protected:
  static double widthOf(const QQuickItem& text) { return text.property("contentWidth").toDouble(); }
  static double heightOf(const QQuickItem& text) { return text.property("contentHeight").toDouble(); }
  // The spacing under the last line is not part of it.
  static double underLastLine(const QQuickItem& text) {
    const double spread = text.property("lineHeight").toDouble() - 1;
    return std::max(0.0, spread) * 1.3 * text.property("font").value<QFont>().pixelSize();
  }
  static void expectWhole(const QQuickItem& text, const std::string& words) {
    EXPECT_FALSE(text.property("truncated").toBool()) << words;
    EXPECT_LE(heightOf(text), text.height() + underLastLine(text) + pixel) << words;
  }
  static void expectWithin(const QQuickItem& text, const QQuickItem& ground, const std::string& words) {
    const QPointF at = text.mapToItem(&ground, {0, 0});
    EXPECT_GE(at.x(), -pixel) << words;
    EXPECT_LE(at.x() + std::min(widthOf(text), text.width()), ground.width() + pixel) << words;
    if (&ground == buttonAround(text.parentItem())) {
      EXPECT_GE(at.y(), -pixel) << words;
      EXPECT_LE(at.y() + std::min(heightOf(text), text.height()), ground.height() + pixel) << words;
    }
  }
};

TEST_P(LargeTextTest, is_cut_off_nowhere) {
  const auto& [shot, size] = GetParam();
  UiStage stage({.stored = shot.stored, .size = size, .desktop = {.dark = false, .textScale = twice}});
  OutsideTexts outside(shot.stored);
  stage.application.machine.http.alterBodies([&](const std::string& body) {
    outside.addBody(body);
    return body;
  });
  play(stage, shot);
  int texts = 0;
  forEachText(stage, [&](const QQuickItem& text) {
    const QString shown = text.property("text").toString();
    const std::string words = shown.left(60).toStdString();
    EXPECT_LE(widthOf(text), text.width() + pixel) << words;
    if (isSite(shown) || !outside.has(shown)) {
      expectWhole(text, words);
    }
    if (drawnAside(text) == 0) {
      expectWithin(text, *stage.window().contentItem(), words);
    }
    if (const auto* const button = buttonAround(text.parentItem())) {
      expectWithin(text, *button, words);
    }
    ++texts;
  });
  EXPECT_GT(texts, 0);
}

INSTANTIATE_TEST_SUITE_P(Scenes, LargeTextTest,
                         testing::ValuesIn(scenesIn({QSize(360, 640), QSize(390, 844)})));

}  // namespace
}  // namespace quillmar::ui
