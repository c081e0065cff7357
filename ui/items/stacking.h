#pragma once

#include <QtQml/qqmlregistration.h>

#include <QObject>

class QQuickItem;

namespace quillmar::ui {

// The order of open popups, which QML can't change.
class Stacking : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON

 public:
  using QObject::QObject;

  // Puts a popup, given by its item, and what dims the window for it below all other open popups.
  Q_INVOKABLE static void lower(QQuickItem* popup);
};

}  // namespace quillmar::ui
