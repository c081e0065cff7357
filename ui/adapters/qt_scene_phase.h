#pragma once

#include <QObject>
#include <QPointer>
#include <QWindow>
#include <functional>

namespace quillmar::ui {

// How a window stands to its person.
enum class WindowPhase { active, inactive, background };

// Tells of each change: a window that can be seen is active, whether it has the focus or not; minimised or
// hidden it is in the background; in a locked session it is inactive.
class QtScenePhase final : public QObject {
  Q_OBJECT

 public:
  using Listener = std::function<void(WindowPhase)>;

  // Tells the present phase with the next turn of the event loop.
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
