#pragma once

#include <QtQml/qqmlregistration.h>

#include <QObject>
#include <QPointer>
#include <QQuickItem>

namespace quillmar::ui {

// The control of a window that would like to show its tooltip, because the pointer or the focus is on it.
class Tips : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(QQuickItem* control READ control NOTIFY controlChanged)

 public:
  using QObject::QObject;

  QQuickItem* control() const { return control_; }
  Q_INVOKABLE void offer(QQuickItem* control) { setControl(control); }
  // Does nothing if another control has offered meanwhile.
  Q_INVOKABLE void withdraw(QQuickItem* control) {
    if (control_ == control) {
      setControl(nullptr);
    }
  }

 Q_SIGNALS:
  void controlChanged();

 private:
  void setControl(QQuickItem* control) {
    if (control_ != control) {
      control_ = control;
      Q_EMIT controlChanged();
    }
  }

  QPointer<QQuickItem> control_;
};

}  // namespace quillmar::ui
