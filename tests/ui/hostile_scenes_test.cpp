#include <gtest/gtest.h>

#include <QAccessible>
#include <QDir>
#include <QFile>
#include <QFont>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QSet>
#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "platform/settings.h"
#include "testing/ui/parent_stage.h"
#include "tests/ui/support/scene_walk.h"
#include "ui/bridge/shown_text.h"

// Every scene of the pictures, with a service that adds hostile characters to each of its texts.
namespace quillmar::ui {
namespace {

struct HostileScene {
  const char* kind;
  QString tail;
  Shot shot;
  QSize size;
};
void PrintTo(const HostileScene& scene, std::ostream* out) {
  *out << scene.shot.name << " with " << scene.kind << " at " << scene.size.width();
}

const QString& directionMarks() {
  static const QString marks = QString::fromUtf16(
      u"\u061C\u200E\u200F\u202A\u202B\u202C\u202D\u202E\u2066\u2067\u2068\u2069\u206A\u206B\u206C\u206D"
      u"\u206E\u206F");
  return marks;
}

bool hasMark(const QString& text) {
  return std::ranges::any_of(text, [](QChar character) { return directionMarks().contains(character); });
}

std::vector<HostileScene> hostileScenes() {
  std::vector<HostileScene> all;
  const std::pair<const char*, QString> tails[] = {
      {"direction marks", directionMarks() + QStringLiteral("evil") + directionMarks() + u'!'},
      {"65,000 letters", QString(65000, u'w')},
      {"200 lines", QStringLiteral("\nline").repeated(200)}};
  for (const auto& shot : scenes()) {
    for (const auto& [kind, tail] : tails) {
      for (const QSize size : {QSize(390, 844), QSize(900, 800), QSize(1280, 800)}) {
        all.push_back({kind, tail, shot, size});
      }
    }
  }
  return all;
}

// Keys whose values steer a scene, such as ids and states; they are not altered.
bool isWay(const QString& key) {
  static const QSet<QString> ways{"id", "status", "role", "token", "doh_endpoint", "api_base_url"};
  return ways.contains(key) || key.endsWith(QLatin1String("_id"));
}

QJsonValue altered(const QJsonValue& value, const QString& key, const QString& tail) {
  if (value.isString() && !isWay(key)) {
    return value.toString() + tail;
  }
  if (value.isArray()) {
    QJsonArray array;
    for (const auto& element : value.toArray()) {
      array.append(altered(element, key, tail));
    }
    return array;
  }
  if (value.isObject()) {
    QJsonObject object;
    const QJsonObject former = value.toObject();
    for (auto entry = former.begin(); entry != former.end(); ++entry) {
      object.insert(entry.key(), altered(entry.value(), entry.key(), tail));
    }
    return object;
  }
  return value;
}

std::string alteredBody(const std::string& body, const QString& tail) {
  const auto document = QJsonDocument::fromJson(QByteArray::fromStdString(body));
  return document.isObject()
             ? QJsonDocument(altered(document.object(), {}, tail).toObject()).toJson().toStdString()
             : body;
}

// Alters what the service said before the application was last closed.
StoredSettings altered(StoredSettings stored, const QString& tail) {
  for (const auto key :
       {settings::parentName, settings::parentEmail, settings::childDohEndpoint, settings::childDeviceID}) {
    if (const auto found = stored.find(key); found != stored.end()) {
      found->second = std::get<std::string>(found->second) + tail.toStdString();
    }
  }
  return stored;
}

class HostileSceneTest : public testing::TestWithParam<HostileScene> {
 protected:
  // Checks an item that a person reads or presses.
  void expectInside(const QQuickItem& item, const std::string& name) const {
    const double left = item.mapToScene({0, 0}).x() - drawnAside(item);
    EXPECT_GE(left, -0.5) << name;
    EXPECT_LE(left + item.width() * item.scale(), GetParam().size.width() + 0.5) << name;
    EXPECT_LE(item.height(), GetParam().size.height() * GetParam().shot.textScale) << name;
  }
  void expectReadable(const QQuickItem& text) const {
    const QString words = text.property("text").toString();
    const std::string name = words.left(60).toStdString();
    // The line height may exceed the height of the letters.
    const double lineRoom = text.property("font").value<QFont>().pixelSize();
    EXPECT_EQ(text.property("textFormat").toInt(), Qt::PlainText) << name;
    EXPECT_FALSE(hasMark(words)) << name;
    EXPECT_GE(text.width(), std::min(text.implicitWidth(), 16.0)) << name << " has no room";
    EXPECT_LE(text.property("contentWidth").toDouble(), text.width() + 0.5) << name;
    EXPECT_LE(text.property("contentHeight").toDouble(), text.height() + lineRoom) << name;
    expectInside(text, name);
  }
  // Checks what a screen reader reads.
  static void expectSayable(const QQuickItem& item) {
    constexpr qsizetype longest = 3 * longestShownText;
    if (auto* const heard = QAccessible::queryAccessibleInterface(const_cast<QQuickItem*>(&item))) {
      for (const auto kind : {QAccessible::Name, QAccessible::Description}) {
        const QString words = heard->text(kind);
        EXPECT_FALSE(hasMark(words)) << words.left(60).toStdString();
        EXPECT_LE(words.size(), longest) << words.left(60).toStdString();
      }
    }
  }
};

TEST_P(HostileSceneTest, stays_in_the_window_and_is_readable) {
  const auto& [kind, tail, shot, size] = GetParam();
  UiStage stage({.stored = altered(shot.stored, tail),
                 .size = size,
                 .desktop = {.dark = false, .textScale = shot.textScale}});
  stage.application.machine.http.alterBodies(
      [&](const std::string& body) { return alteredBody(body, tail); });
  play(stage, shot);
  int texts = 0;
  forEachShown(*stage.window().contentItem(), [&](const QQuickItem& item) {
    expectSayable(item);
    if (isText(item)) {
      expectReadable(item);
      ++texts;
    } else if (item.inherits("QQuickTextInput")) {
      EXPECT_FALSE(hasMark(item.property("displayText").toString()));
      expectInside(item, "text box");
    } else if (isButton(item) || item.activeFocusOnTab() || item.property("dragging").isValid()) {
      expectInside(item, accessibleName(item).left(60).toStdString());
    }
  });
  EXPECT_GT(texts, 0);
}

INSTANTIATE_TEST_SUITE_P(Scenes, HostileSceneTest, testing::ValuesIn(hostileScenes()));

// Every text is drawn by one component and converted by the bridge, so no screen can bypass the check.
TEST(HostileScenes, only_one_component_draws_texts) {
  static const QRegularExpression drawn(
      QStringLiteral(
          R"(^\s*(?:\w+: )?(?:\w+\.)?(?:Text|TextEdit|TextInput|TextArea|StaticText|TextField)\s*\{|RichText|StyledText|AutoText|MarkdownText)"),
      QRegularExpression::MultilineOption);
  static const QMap<QString, QString> allowed{{"Label.qml", "Text {"}, {"TextBox.qml", "T.TextField {"}};
  int files = 0;
  for (const QFileInfo& file : QDir(QStringLiteral(":/Quillmar")).entryInfoList({"*.qml"})) {
    QFile source(file.filePath());
    ASSERT_TRUE(source.open(QFile::ReadOnly));
    QString text = source.readAll();
    if (allowed.contains(file.fileName())) {
      ASSERT_EQ(text.count(allowed[file.fileName()]), 1) << file.fileName().toStdString();
      text.remove(allowed[file.fileName()]);
    }
    EXPECT_FALSE(drawn.match(text).hasMatch())
        << file.fileName().toStdString() << ": " << drawn.match(text).captured().toStdString();
    ++files;
  }
  EXPECT_GT(files, 50);
  EXPECT_TRUE(drawn.match("Row {\n    Text {").hasMatch());
  EXPECT_TRUE(drawn.match("    contentItem: Text {").hasMatch());
}

TEST(HostileScenes, alter_the_texts_of_the_service) {
  const QString tail = QStringLiteral("-altered");
  UiStage stage({.stored = signedInParent()});
  stage.application.machine.http.alterBodies(
      [&](const std::string& body) { return alteredBody(body, tail); });
  openChild(stage).devicesSection.linkDevice();
  stage.settle();
  EXPECT_TRUE(stage.shows("Old phone-altered"));
}

}  // namespace
}  // namespace quillmar::ui
