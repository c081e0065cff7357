#include "ui/items/quick_touches.h"

#include <QMouseEvent>

namespace quillmar::ui {

void QuickTouches::setTarget(QObject* target) {
  if (target_ == target) {
    return;
  }
  if (target_) {
    target_->removeEventFilter(this);
  }
  target_ = target;
  if (target_) {
    target_->installEventFilter(this);
  }
  Q_EMIT targetChanged();
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
