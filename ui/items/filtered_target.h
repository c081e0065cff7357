#pragma once

#include <QObject>
#include <QPointer>

namespace quillmar::ui {

// Makes `filter` an event filter of `target` and no longer of the former one. False if nothing changed.
inline bool changeFilteredTarget(QPointer<QObject>& current, QObject* target, QObject& filter) {
  if (current == target) {
    return false;
  }
  if (current) {
    current->removeEventFilter(&filter);
  }
  current = target;
  if (current) {
    current->installEventFilter(&filter);
  }
  return true;
}

}  // namespace quillmar::ui
