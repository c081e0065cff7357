#pragma once

#include <QtQml/qqmlregistration.h>

#include <QObject>
#include <QPointer>

namespace quillmar::ui {

// Lets the second of two quick touches of a MouseArea count. Qt makes a double click of it, which a MouseArea
// turns down even where it listens to it, and calls the touch off; here it is taken instead.
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
