#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>
#include <map>

#include "foundation/observable.h"
#include "tests/ui/support/scene_walk.h"
#include "ui/bridge/shown_text.h"

// QML reads a member of a screen by its name, which no compiler checks: a misspelt or removed name is
// undefined, and its place on the screen stays empty.
namespace quillmar::ui {
namespace {

using Names = QSet<QString>;

// The members of a type of screen, and those of its rows.
struct Registered {
  Names members;
  Names ofRows;
};
using Registry = std::map<QString, Registered>;

void addRow(const ObservableObject& row, Names& names);

void addRowsOf(const Member& member, Names& names) {
  // A sheet is a screen of its own.
  if (member.kind() != Member::Kind::sheet) {
    for (const auto& nested : member.nested()) {
      addRow(*nested.object, names);
    }
  }
  if (const Value value = member.value(); value.list()) {
    for (const Value& row : *value.list()) {
      if (row.map()) {
        for (const auto& [key, field] : *row.map()) {
          names.insert(exactText(key));
        }
      }
    }
  }
}

void addRow(const ObservableObject& row, Names& names) {
  for (const Member* const member : row.members()) {
    names.insert(exactText(member->name()));
    addRowsOf(*member, names);
  }
}

// The members of every screen that appears in any scene.
Registry registerAll() {
  Registry all;
  for (const Shot& shot : scenes()) {
    UiStage stage({.stored = shot.stored});
    play(stage, shot);
    for (const auto& screen : stage.application.app().contentView().screens()) {
      auto& [members, ofRows] = all[exactText(screen->typeName())];
      for (const Member* const member : screen->members()) {
        members.insert(exactText(member->name()));
        addRowsOf(*member, ofRows);
      }
    }
  }
  return all;
}

using Texts = std::map<QString, QString>;

// The text of each QML file, without comments, by its type's name.
Texts readTexts() {
  static const QRegularExpression comment(QStringLiteral("//.*"));
  Texts texts;
  const QDir files(QStringLiteral(":/Quillmar"));
  for (const QString& name : files.entryList({QStringLiteral("*.qml")})) {
    QFile file(files.filePath(name));
    if (file.open(QIODevice::ReadOnly)) {
      texts[name.chopped(4)] = QString::fromUtf8(file.readAll()).remove(comment);
    }
  }
  return texts;
}

bool isGivenAScreen(const QString& text) { return text.contains("property var screen"); }

bool uses(const QString& text, const QString& type) {
  const QRegularExpression use("\\b" + type + R"re((\.qml"|\s*\{))re");
  return use.match(text).hasMatch();
}

// Adds the file that draws a screen, and the files that it passes the screen to.
void addDrawing(const QString& type, const Texts& texts, QSet<QString>& drawing) {
  drawing.insert(type);
  for (const auto& [name, text] : texts) {
    if (!drawing.contains(name) && isGivenAScreen(text) && uses(texts.at(type), name)) {
      addDrawing(name, texts, drawing);
    }
  }
}

QStringList namesAfter(const char* object, const QString& text) {
  QStringList names;
  const QRegularExpression read("\\b" + QString(object) + R"(\??\.(\w+))");
  for (auto found = read.globalMatch(text); found.hasNext();) {
    names.append(found.next().captured(1));
  }
  return names;
}

QStringList unknownIn(const QString& text, const Registered& screen) {
  // Members that the bridge adds to every screen.
  static const Names ofTheBridge{"sheet",        "page",        "typeName",      "pressKey",
                                 "dismissSheet", "dismissPage", "setPagesBeside"};
  QStringList unknown;
  for (const QString& name : namesAfter("screen", text)) {
    if (!screen.members.contains(name) && !ofTheBridge.contains(name)) {
      unknown.append("screen." + name);
    }
  }
  for (const QString& name : namesAfter("modelData", text)) {
    if (!screen.ofRows.contains(name)) {
      unknown.append("modelData." + name);
    }
  }
  return unknown;
}

TEST(MemberNames, that_the_qml_files_read_are_registered_by_their_models) {
  const Texts texts = readTexts();
  const Registry registry = registerAll();
  int read = 0;
  for (const auto& [screen, registered] : registry) {
    if (!texts.contains(screen)) {
      continue;  // It is drawn by another screen's file.
    }
    QSet<QString> drawing;
    addDrawing(screen, texts, drawing);
    for (const QString& file : drawing) {
      EXPECT_EQ(unknownIn(texts.at(file), registered).join(", ").toStdString(), "")
          << file.toStdString() << ", shown for " << screen.toStdString();
      read += static_cast<int>(namesAfter("screen", texts.at(file)).size());
    }
  }
  EXPECT_GT(read, 500);
}

// A file whose screen appears in no scene would not be checked.
TEST(MemberNames, are_looked_at_in_every_file_that_is_given_a_screen) {
  const Texts texts = readTexts();
  QSet<QString> seen{"ScreenView", "ScreenHost", "Sheet", "SidePane"};  // They draw any screen.
  for (const auto& [screen, registered] : registerAll()) {
    if (texts.contains(screen)) {
      addDrawing(screen, texts, seen);
    }
  }
  for (const auto& [name, text] : texts) {
    EXPECT_TRUE(!isGivenAScreen(text) || seen.contains(name)) << name.toStdString();
  }
}

TEST(MemberNames, that_are_misspelt_are_found) {
  const Registered settings{.members = {"title", "done", "rows"}, .ofRows = {"icon"}};
  const QString drawing = R"(
    Page {
        required property var screen
        title: page.screen.titel
        visible: page.screen?.dnoe !== null
        effect: page.screen.done
        Repeater { model: page.screen.rows; Symbol { name: modelData.icno } }
        Symbol { name: modelData.icon }
    })";
  EXPECT_EQ(unknownIn(drawing, settings), (QStringList{"screen.titel", "screen.dnoe", "modelData.icno"}));
}

}  // namespace
}  // namespace quillmar::ui
