#include <QDir>
#include <QGuiApplication>
#include <QTextStream>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "command_line/command_line.h"
#include "testing/ui/offscreen.h"
#include "tools/common/start.h"
#include "tools/pictures/scenes.h"
#include "ui/bridge/shown_text.h"

namespace {

using quillmar::ui::exactText;

constexpr auto usualSizes = std::to_array<QSize>({{390, 844}, {820, 1180}, {1280, 800}, {1920, 1080}});

QString fileName(const quillmar::Shot& scene, bool dark, QSize size) {
  return QStringLiteral("%1-%2-%3.png")
      .arg(exactText(scene.name), dark ? QStringLiteral("dark") : QStringLiteral("light"))
      .arg(size.width());
}

struct Wish {
  std::string directory;
  std::string scenes;
  std::optional<int> width;
  std::optional<double> textScale;
  bool isMirrored = false;
};

quillmar::command_line::Program programFor(Wish& wish) {
  using namespace quillmar::command_line;
  return {
      .name = "quillmar-pictures",
      .about = "Draws every screen in each of its states, in both looks and several widths.",
      .arguments = {{"DIRECTORY", "Where the pictures go", to(wish.directory)}},
      .options = {
          {"--only", "NAME", "Draw only scenes whose names begin so", to(wish.scenes)},
          {"--mirrored", "", "Draw for a language that is written from right to left", to(wish.isMirrored)},
          {"--text-scale", "SCALE", "Draw texts of this size, 2 being twice the usual",
           within(wish.textScale, 0.1, 10.0)},
          {"--width", "POINTS", "Draw windows of this width only", within(wish.width, 1, 10000)},
      }};
}

std::vector<QSize> sizesFor(const Wish& wish) {
  constexpr int phoneHeight = 844;
  return wish.width ? std::vector{QSize(*wish.width, phoneHeight)}
                    : std::vector(usualSizes.begin(), usualSizes.end());
}

bool draw(const quillmar::Shot& scene, const Wish& wish, bool dark, QSize size, const QDir& directory) {
  quillmar::ui::UiStage stage(
      {.stored = scene.stored,
       .size = size,
       .desktop = {
           .dark = dark, .textScale = wish.textScale.value_or(scene.textScale), .reducedMotion = false}});
  // Otherwise it lies on the control in the corner, whose tooltip would be in the picture.
  stage.pointAt({-1, -1});
  scene.play(stage);
  return stage.picture().save(directory.filePath(fileName(scene, dark, size)));
}

}  // namespace

int main(int count, char** arguments) {
  Wish wish;
  const auto program = programFor(wish);
  if (const auto status = quillmar::endsAtOnce(program, count, arguments)) {
    return *status;
  }
  quillmar::ui::drawOffscreen();
  const QGuiApplication application(count, arguments);
  QGuiApplication::setLayoutDirection(wish.isMirrored ? Qt::RightToLeft : Qt::LayoutDirectionAuto);
  const QDir directory(exactText(wish.directory));
  QTextStream errors(stderr);
  if (!directory.mkpath(QStringLiteral("."))) {
    errors << directory.path() << " cannot be made\n";
    return 1;
  }
  for (const auto& scene : quillmar::scenes()) {
    if (!scene.name.starts_with(wish.scenes)) {
      continue;
    }
    for (const QSize size : sizesFor(wish)) {
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
