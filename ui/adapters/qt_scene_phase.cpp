#include "ui/adapters/qt_scene_phase.h"

#include <QDBusConnection>
#include <utility>

namespace quillmar::ui {

QtScenePhase::QtScenePhase(QWindow& window, Listener listener)
    : window_(&window), listener_(std::move(listener)) {
  connect(&window, &QWindow::visibilityChanged, this, &QtScenePhase::update);
  for (const auto* const service : {"org.freedesktop.ScreenSaver", "org.gnome.ScreenSaver"}) {
    QDBusConnection::sessionBus().connect(QString(), QString(), QLatin1StringView(service),
                                          QStringLiteral("ActiveChanged"), this, SLOT(sessionLocked(bool)));
  }
  QMetaObject::invokeMethod(this, &QtScenePhase::update, Qt::QueuedConnection);
}

void QtScenePhase::sessionLocked(bool locked) {
  locked_ = locked;
  update();
}

WindowPhase QtScenePhase::phase() const {
  if (!window_ || window_->visibility() == QWindow::Hidden || window_->visibility() == QWindow::Minimized) {
    return WindowPhase::background;
  }
  return locked_ ? WindowPhase::inactive : WindowPhase::active;
}

void QtScenePhase::update() {
  const WindowPhase present = phase();
  if (!std::exchange(told_, true) || present != phase_) {
    phase_ = present;
    listener_(present);
  }
}

}  // namespace quillmar::ui
