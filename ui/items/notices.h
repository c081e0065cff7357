#pragma once

#include <QtQml/qqmlregistration.h>

#include <QObject>

class QJSEngine;
class QQmlEngine;

namespace quillmar::ui {

// The notices that the program shows outside its window, for the screen with their switch.
class Notices final : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  // Null if the program shows none.
  Q_PROPERTY(QObject* model READ model CONSTANT)

 public:
  explicit Notices(QObject* model) : model_(model) {}
  static Notices* create(QQmlEngine* engine, QJSEngine* script);

  QObject* model() const { return model_; }

 private:
  QObject* const model_;
};

}  // namespace quillmar::ui
