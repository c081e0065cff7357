#include <gtest/gtest.h>

#include <QColor>
#include <QDir>
#include <QFile>
#include <QFont>
#include <QMetaProperty>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QRegularExpression>
#include <memory>

#include "presentation/colors.h"
#include "presentation/indicators.h"
#include "presentation/measures.h"
#include "testing/ui/ui_stage.h"
#include "ui/bridge/shown_text.h"

// Theme.qml has the presentation's colours and measures under the same names.
namespace quillmar::ui {
namespace {

class ThemeTest : public testing::TestWithParam<bool> {
 protected:
  bool dark() const { return GetParam(); }
  const QObject& theme() const { return *holder_->property("theme").value<QObject*>(); }
  QColor colorNamed(std::string_view name) const {
    return theme().property(exactText(name).toUtf8().constData()).value<QColor>();
  }

  UiStage stage{{.desktop = {.dark = dark()}}};

 private:
  std::unique_ptr<QObject> hold() {
    QQmlComponent component(qmlEngine(&stage.window()));
    component.setData("import QtQml; import Quillmar; QtObject { property var theme: Theme }", {});
    return std::unique_ptr<QObject>(component.create());
  }

  std::unique_ptr<QObject> holder_ = hold();
};

QColor drawn(const Color& color) {
  return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                          static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

TEST_P(ThemeTest, has_every_colour_of_the_look_in_force) {
  for (const auto& [name, text] : rawNames<SchemeColor>) {
    const auto& [byNight, byDay] = colors(name);
    EXPECT_EQ(colorNamed(text), drawn(dark() ? byNight : byDay)) << text;
  }
}

TEST_P(ThemeTest, has_the_colours_of_the_other_look_after_a_change) {
  stage.desktop.setWishes({.dark = !dark()});
  stage.settle();
  for (const auto& [name, text] : rawNames<SchemeColor>) {
    const auto& [byNight, byDay] = colors(name);
    EXPECT_EQ(colorNamed(text), drawn(dark() ? byDay : byNight)) << text;
  }
}

TEST_P(ThemeTest, has_every_colour_that_a_screen_names) {
  for (const auto& [name, text] : rawNames<SemanticColor>) {
    QVariant given;
    ASSERT_TRUE(QMetaObject::invokeMethod(const_cast<QObject*>(&theme()), "tint",
                                          Q_RETURN_ARG(QVariant, given), Q_ARG(QVariant, exactText(text))));
    EXPECT_EQ(given.value<QColor>(), drawn(color(name))) << text;
  }
}

TEST_P(ThemeTest, has_no_invalid_colour) {
  int seen = 0;
  for (int i = theme().metaObject()->propertyOffset(); i < theme().metaObject()->propertyCount(); ++i) {
    const QMetaProperty property = theme().metaObject()->property(i);
    if (property.metaType() == QMetaType::fromType<QColor>()) {
      const auto color = property.read(&theme()).value<QColor>();
      EXPECT_TRUE(color.isValid()) << property.name();
      ++seen;
    }
  }
  EXPECT_GT(seen, static_cast<int>(rawNames<SchemeColor>.size()));
}

TEST_P(ThemeTest, has_the_presentations_measures) {
  int seen = 0;
  forEachField<Measures>([&](const auto& field) {
    if (const QVariant own = theme().property(exactText(field.key).toUtf8().constData()); own.isValid()) {
      EXPECT_EQ(own.toDouble(), measures.*field.member) << field.key;
      ++seen;
    }
  });
  EXPECT_GE(seen, 18);
  EXPECT_EQ(theme().property("body").value<QFont>().pixelSize(), measures.bodySize);
}

INSTANTIATE_TEST_SUITE_P(Looks, ThemeTest, testing::Bool(),
                         [](const auto& look) { return look.param ? "dark" : "light"; });

// A colour literal in a screen would be the same in both looks, and its contrast would not be checked.
const QRegularExpression ownColour(
    R"re("#[0-9A-Fa-f]{3,8}"|Qt\.(rgba|hsla|hsva|color)\(|color: *"(?!transparent")\w+")re");

TEST(Theme, is_the_source_of_every_colour) {
  const QDir files(QStringLiteral(":/Quillmar"));
  const auto names = files.entryList({QStringLiteral("*.qml")});
  EXPECT_GT(names.size(), 100);
  for (const QString& name : names) {
    QFile file(files.filePath(name));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    for (int line = 1; !file.atEnd(); ++line) {
      const QString text = QString::fromUtf8(file.readLine());
      const bool isTheMixing = name == "Theme.qml" && text.contains("function alpha(");
      EXPECT_FALSE(!isTheMixing && ownColour.match(text).hasMatch())
          << name.toStdString() << ':' << line << ": " << text.trimmed().toStdString();
    }
  }
}

TEST(Theme, colour_literals_are_found) {
  for (const char* const text : {R"(color: "#FFFFFF")", R"(color: on ? "#fff" : Theme.text)",
                                 R"(color: "red")", "color: Qt.rgba(0, 0, 0, 0.4)"}) {
    EXPECT_TRUE(ownColour.match(text).hasMatch()) << text;
  }
  EXPECT_FALSE(ownColour.match(R"(color: "transparent")").hasMatch());
}

}  // namespace
}  // namespace quillmar::ui
