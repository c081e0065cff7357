#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QTextStream>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "tools/pictures/scenes.h"

namespace {

constexpr auto sizes = std::to_array<QSize>({{390, 844}, {820, 1180}, {1280, 800}});

QString fileName(const quillmar::Shot& scene, bool dark, QSize size) {
  return QStringLiteral("%1-%2-%3.png")
      .arg(QString::fromStdString(scene.name), dark ? QStringLiteral("dark") : QStringLiteral("light"))
      .arg(size.width());
}

struct Wish {
  std::string scenes;
  std::vector<QSize> sizes;
  std::optional<double> textScale;
};

bool draw(const quillmar::Shot& scene, const Wish& wish, bool dark, QSize size, const QDir& directory) {
  quillmar::ui::UiStage stage(
      {.stored = scene.stored,
       .size = size,
       .desktop = {
           .dark = dark, .textScale = wish.textScale.value_or(scene.textScale), .reducedMotion = false}});
  scene.play(stage);
  return stage.picture().save(directory.filePath(fileName(scene, dark, size)));
}

Wish wishOf(const QCommandLineParser& parser) {
  constexpr int phoneHeight = 844;
  Wish wish{
      .scenes = parser.value("only").toStdString(), .sizes = {sizes.begin(), sizes.end()}, .textScale = {}};
  if (parser.isSet("text-scale")) {
    wish.textScale = parser.value("text-scale").toDouble();
  }
  if (parser.isSet("width")) {
    wish.sizes = {{parser.value("width").toInt(), phoneHeight}};
  }
  return wish;
}

}  // namespace

// Draws every screen in each of its states, in both looks and several widths.
int main(int count, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  const QGuiApplication application(count, arguments);
  QCommandLineParser parser;
  parser.addHelpOption();
  parser.addOption({"only", "Draw only scenes whose names begin so.", "name"});
  parser.addOption({"text-scale", "Draw texts of this size, 2 being twice the usual.", "scale"});
  parser.addOption({"width", "Draw windows of this width only.", "points"});
  parser.addPositionalArgument("directory", "Where the pictures go.");
  parser.process(application);
  if (parser.positionalArguments().size() != 1) {
    parser.showHelp(2);
  }
  const QDir directory(parser.positionalArguments().constFirst());
  QTextStream errors(stderr);
  if (!directory.mkpath(QStringLiteral("."))) {
    errors << directory.path() << " cannot be made\n";
    return 1;
  }
  const Wish wish = wishOf(parser);
  for (const auto& scene : quillmar::scenes()) {
    if (!scene.name.starts_with(wish.scenes)) {
      continue;
    }
    for (const QSize size : wish.sizes) {
      for (const bool dark : {false, true}) {
        if (!draw(scene, wish, dark, size, directory)) {
          errors << fileName(scene, dark, size) << " cannot be written\n";
          return 1;
        }
      }
    }
  }
  return 0;
}
