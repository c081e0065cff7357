#include "ui/adapters/desktop_settings.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace quillmar::ui {

DesktopSettings::DesktopSettings() { qGuiApp->installEventFilter(this); }

bool DesktopSettings::isDark() const {
  if (wishes_.dark) {
    return *wishes_.dark;
  }
  const QPalette palette = QGuiApplication::palette();
  return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF();
}

void DesktopSettings::setWishes(const Wishes& wishes) {
  wishes_ = wishes;
  Q_EMIT changed();
}

bool DesktopSettings::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ApplicationPaletteChange && watched == qGuiApp) {
    Q_EMIT changed();
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace quillmar::ui
