#include "ui/items/quick_touches.h"

#include <QMouseEvent>

#include "ui/items/filtered_target.h"

namespace quillmar::ui {

void QuickTouches::setTarget(QObject* target) {
  if (changeFilteredTarget(target_, target, *this)) {
    Q_EMIT targetChanged();
  }
}

bool QuickTouches::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::MouseButtonDblClick ||
      static_cast<QMouseEvent*>(event)->source() == Qt::MouseEventNotSynthesized) {
    return QObject::eventFilter(watched, event);
  }
  event->accept();
  return true;
}

}  // namespace quillmar::ui
