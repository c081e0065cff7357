#pragma once

#include <QtQml/qqmlregistration.h>

#include <QObject>
#include <QPointer>

namespace quillmar::ui {

// Makes a MouseArea accept the second of two quick touches. Qt turns it into a double click, which a
// MouseArea rejects even if it handles double clicks, and cancels the touch.
class QuickTouches : public QObject {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QObject* target READ target WRITE setTarget NOTIFY targetChanged)

 public:
  using QObject::QObject;

  QObject* target() const { return target_; }
  void setTarget(QObject* target);

  bool eventFilter(QObject* watched, QEvent* event) override;

 Q_SIGNALS:
  void targetChanged();

 private:
  QPointer<QObject> target_;
};

}  // namespace quillmar::ui
