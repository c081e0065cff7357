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

// Where a window is, and how large.
struct WindowGeometry {
  // Of its frame; nullopt if the platform does not tell, or decides itself.
  std::optional<QPoint> place;
  QSize size;
  bool isMaximized = false;

  friend bool operator==(const WindowGeometry& one, const WindowGeometry& other) = default;
};

// As wide as one column needs, and no wider.
inline constexpr QSize firstWindowSize(460, 860);

// That of the last time, made to fit the screens that exist: no larger than one of them, and wholly on it.
// The first screen is the one on which a window without a place appears. A window that was on none of them
// has no place, and one that was nowhere has its first size.
WindowGeometry fitted(const std::optional<WindowGeometry>& last, const QList<QRect>& screens);

// nullopt if the file holds no size, or one that no screen ever had.
std::optional<WindowGeometry> readGeometry(const StateFile& file);
void keepGeometry(const StateFile& file, const QWindow& window);
// Before the window is shown.
void restoreGeometry(const StateFile& file, QWindow& window);

}  // namespace quillmar::ui
