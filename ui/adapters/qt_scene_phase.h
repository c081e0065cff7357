#pragma once

#include <QObject>
#include <QPointer>
#include <QWindow>
#include <functional>

namespace quillmar::ui {

// Whether a person can see and use a window.
enum class WindowPhase { active, inactive, background };

// Reports each change of a window's phase. A visible window is active, with or without the focus; a
// minimised or hidden one is in the background; in a locked session it is inactive.
class QtScenePhase final : public QObject {
  Q_OBJECT

 public:
  using Listener = std::function<void(WindowPhase)>;

  // Reports the current phase in the next turn of the event loop.
  QtScenePhase(QWindow& window, Listener listener);

 private Q_SLOTS:
  void sessionLocked(bool locked);

 private:
  WindowPhase phase() const;
  void update();

  QPointer<QWindow> window_;
  Listener listener_;
  bool locked_ = false;
  bool told_ = false;
  WindowPhase phase_ = WindowPhase::background;
};

}  // namespace quillmar::ui
