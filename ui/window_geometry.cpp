#include "ui/window_geometry.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <algorithm>
#include <string>
#include <vector>

#include "foundation/text.h"
#include "platform/common/state_file.h"

namespace quillmar::ui {
namespace {

constexpr auto placeX = "window.x";
constexpr auto placeY = "window.y";
constexpr auto sizeWidth = "window.width";
constexpr auto sizeHeight = "window.height";
constexpr auto maximized = "window.maximized";

// Larger than any arrangement of screens.
constexpr int farthest = 100000;

std::optional<int> numberIn(const StateFile& file, const char* name) {
  const auto number = wholeNumber(file.value(name).value_or(""));
  return number && std::abs(*number) <= farthest ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

int areaOf(const QRect& rect) { return rect.isEmpty() ? 0 : rect.width() * rect.height(); }

// On Wayland a window can't know its position.
bool tellsPlaces() { return !QGuiApplication::platformName().startsWith(QLatin1String("wayland")); }

// The window's own screen comes first.
QList<QRect> screensFor(const QWindow& window) {
  QList<QRect> screens;
  if (window.screen()) {
    screens.append(window.screen()->availableGeometry());
  }
  for (const QScreen* const screen : QGuiApplication::screens()) {
    if (screen != window.screen()) {
      screens.append(screen->availableGeometry());
    }
  }
  return screens;
}

}  // namespace

WindowGeometry fitted(const std::optional<WindowGeometry>& last, const QList<QRect>& screens) {
  WindowGeometry geometry = last.value_or(WindowGeometry{{}, firstWindowSize, false});
  if (screens.isEmpty()) {
    return geometry;
  }
  if (!geometry.place) {
    geometry.size = geometry.size.boundedTo(screens.first().size());
    return geometry;
  }
  const QRect wanted(*geometry.place, geometry.size);
  const auto overlap = [&wanted](const QRect& screen) { return areaOf(screen.intersected(wanted)); };
  const QRect screen = *std::ranges::max_element(screens, {}, overlap);
  if (overlap(screen) == 0) {
    geometry.place.reset();
    geometry.size = geometry.size.boundedTo(screens.first().size());
    return geometry;
  }
  geometry.size = geometry.size.boundedTo(screen.size());
  geometry.place =
      QPoint(std::clamp(wanted.x(), screen.x(), screen.x() + screen.width() - geometry.size.width()),
             std::clamp(wanted.y(), screen.y(), screen.y() + screen.height() - geometry.size.height()));
  return geometry;
}

std::optional<WindowGeometry> readGeometry(const StateFile& file) {
  const auto width = numberIn(file, sizeWidth);
  const auto height = numberIn(file, sizeHeight);
  if (!width || !height || *width < 1 || *height < 1) {
    return std::nullopt;
  }
  WindowGeometry geometry{{}, QSize(*width, *height), file.value(maximized) == "yes"};
  const auto x = numberIn(file, placeX);
  const auto y = numberIn(file, placeY);
  if (x && y) {
    geometry.place = QPoint(*x, *y);
  }
  return geometry;
}

void keepGeometry(const StateFile& file, const QWindow& window) {
  // While a window closes, its visibility is unset but its states are still valid.
  const auto states = window.windowStates();
  const bool isMaximized = states.testFlag(Qt::WindowMaximized);
  std::vector<StateFile::Row> rows{{maximized, isMaximized ? "yes" : "no"}};
  // A maximized or full-screen window keeps the stored size, to which it returns.
  if (!isMaximized && !states.testFlag(Qt::WindowFullScreen)) {
    rows.insert(rows.end(),
                {{sizeWidth, std::to_string(window.width())}, {sizeHeight, std::to_string(window.height())}});
    if (tellsPlaces()) {
      const QPoint place = window.framePosition();
      rows.insert(rows.end(), {{placeX, std::to_string(place.x())}, {placeY, std::to_string(place.y())}});
    }
  }
  // A failure is ignored: the next window starts with the default geometry.
  static_cast<void>(file.write(rows));
}

void restoreGeometry(const StateFile& file, QWindow& window) {
  const auto geometry = fitted(readGeometry(file), screensFor(window));
  window.resize(geometry.size);
  if (geometry.place && tellsPlaces()) {
    window.setFramePosition(*geometry.place);
  }
  if (geometry.isMaximized) {
    window.setWindowStates(Qt::WindowMaximized);
  }
}

}  // namespace quillmar::ui
