#include "ui/items/key_focus.h"

#include <QFocusEvent>

#include "ui/items/filtered_target.h"

namespace quillmar::ui {
namespace {

// Whether the person moved the focus, by whatever means.
bool isPersons(Qt::FocusReason reason) { return isKeyboards(reason) || reason == Qt::MouseFocusReason; }

}  // namespace

bool isKeyboards(Qt::FocusReason reason) {
  return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
         reason == Qt::ShortcutFocusReason;
}

void KeyFocus::setTarget(QObject* target) {
  if (changeFilteredTarget(target_, target, *this)) {
    Q_EMIT targetChanged();
  }
}

bool KeyFocus::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusIn) {
    focusCame(static_cast<QFocusEvent*>(event)->reason());
  } else if (event->type() == QEvent::FocusOut) {
    focusWent(static_cast<QFocusEvent*>(event)->reason());
  }
  return QObject::eventFilter(watched, event);
}

void KeyFocus::focusCame(Qt::FocusReason reason) {
  setActive(isPersons(reason) ? isKeyboards(reason) : returns_);
}

void KeyFocus::focusWent(Qt::FocusReason reason) {
  returns_ = isActive_ && !isPersons(reason);
  setActive(false);
}

void KeyFocus::setActive(bool active) {
  if (isActive_ != active) {
    isActive_ = active;
    Q_EMIT activeChanged();
  }
}

}  // namespace quillmar::ui
