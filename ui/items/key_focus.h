#pragma once

#include <QtQml/qqmlregistration.h>

#include <QObject>
#include <QPointer>

namespace quillmar::ui {

// Whether the person moved the focus by the keyboard.
bool isKeyboards(Qt::FocusReason reason);

// Tells an item that is no PressArea whether the keyboard brought it the focus. A popup that takes the focus
// and returns it changes nothing.
class KeyFocus : public QObject {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QObject* target READ target WRITE setTarget NOTIFY targetChanged)
  Q_PROPERTY(bool active READ isActive NOTIFY activeChanged)

 public:
  using QObject::QObject;

  QObject* target() const { return target_; }
  void setTarget(QObject* target);
  bool isActive() const { return isActive_; }

  bool eventFilter(QObject* watched, QEvent* event) override;

 Q_SIGNALS:
  void targetChanged();
  void activeChanged();

 private:
  void focusCame(Qt::FocusReason reason);
  void focusWent(Qt::FocusReason reason);
  void setActive(bool active);

  QPointer<QObject> target_;
  bool isActive_ = false;
  // Active once the focus is returned.
  bool returns_ = false;
};

}  // namespace quillmar::ui
