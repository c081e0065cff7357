#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <optional>

class QWindow;

namespace quillmar {
class StateFile;
}

namespace quillmar::ui {

// A window's position and size.
struct WindowGeometry {
  // The frame's position; nullopt if the platform does not tell it or chooses it.
  std::optional<QPoint> place;
  QSize size;
  bool isMaximized = false;

  friend bool operator==(const WindowGeometry& one, const WindowGeometry& other) = default;
};

// The width of one column.
inline constexpr QSize firstWindowSize(460, 860);

// The stored geometry, adapted to the present screens: no larger than the screen that it overlaps most, and
// entirely on it. If it overlaps no screen, it loses its position; without a stored geometry the result is
// the default size. The first screen is where a window without a position opens.
WindowGeometry fitted(const std::optional<WindowGeometry>& last, const QList<QRect>& screens);

// nullopt if the file has no size or an impossible one.
std::optional<WindowGeometry> readGeometry(const StateFile& file);
void keepGeometry(const StateFile& file, const QWindow& window);
// Call it before the window is shown.
void restoreGeometry(const StateFile& file, QWindow& window);

}  // namespace quillmar::ui
