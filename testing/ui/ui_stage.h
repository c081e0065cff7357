#pragma once

#include <QAnimationDriver>
#include <QImage>
#include <QPoint>
#include <QSize>
#include <QString>
#include <QVariantAnimation>
#include <functional>
#include <memory>
#include <optional>

#include "testing/test_application.h"
#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/qt_window_style.h"
#include "ui/permission_prompt.h"
#include "ui/window.h"

class QQuickItem;

namespace quillmar::ui {

// Animations that move only when they are told to. A process has one such clock, which its stages share.
class SteppedAnimations final : public QAnimationDriver {
 public:
  static std::shared_ptr<SteppedAnimations> shared();

  SteppedAnimations();
  ~SteppedAnimations() override { uninstall(); }

  void step(qint64 milliseconds) {
    elapsed_ += milliseconds;
    advance();
  }
  qint64 elapsed() const override { return elapsed_; }

 private:
  qint64 elapsed_ = 0;
  // While nothing but pauses run, Qt lets them last in real time. This one never pauses.
  QVariantAnimation endless_;
};

// A whole application on a machine of its own, and its real window: in virtual time, with animations that end
// at once.
class UiStage {
 public:
  struct Options {
    StoredSettings stored{};
    std::optional<TestApplication::Network> network{};
    QSize size{390, 844};
    DesktopSettings::Wishes desktop{.dark = false};
  };

  UiStage() : UiStage(Options()) {}
  explicit UiStage(const Options& options);
  ~UiStage();

  TestApplication application;
  DesktopSettings desktop;
  QtWindowStyle style{desktop};
  PermissionPrompt permissionPrompt;

  QQuickWindow& window() const { return window_->quickWindow(); }
  // Lets the application and its window come to rest: what is due now has run, and every transition has
  // ended.
  void settle();
  // The same after virtual time has passed.
  void advance(Duration duration);
  // What is due now has run, and the transitions have gone on by this much and no more.
  void step(Duration duration);
  QImage picture();

  // The first item in use that shows this text, or has it as its name; null where there is none.
  QQuickItem* find(const QString& text) const;
  bool shows(const QString& text) const { return find(text) != nullptr; }
  // The first control in use of this name; null where there is none.
  QQuickItem* control(const QString& name) const;
  QQuickItem* focused() const;
  // The name under which a screen reader knows the item with the focus.
  QString focusedName() const;
  // Gives a control the focus, as the Tab key does.
  void focusOn(const QString& name);
  // Presses Tab until this control has the focus.
  void tabTo(const QString& name);

  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  void type(const QString& text);
  void click(const QString& text);
  void clickAt(QPoint point, Qt::MouseButton button = Qt::LeftButton);
  // Presses at the point, goes `way` in small steps, and lets go unless told to hold on.
  enum class Pointer { mouse, finger };
  enum class Ending { letGo, holdOn };
  void drag(Pointer pointer, QPoint from, QPoint way, Ending ending = Ending::letGo);
  void letGo(Pointer pointer, QPoint at);
  void tap(QPoint point);
  // Brings the mouse there, with no button down.
  void pointAt(QPoint point);

 private:
  void followLook();

  const std::shared_ptr<SteppedAnimations> animations_ = SteppedAnimations::shared();
  std::unique_ptr<Window> window_;
  Subscription look_;
};

// The name under which a screen reader knows an item; empty where it knows none.
QString accessibleName(const QQuickItem& item);
// Whether a screen reader hears that it is checked.
bool isChecked(const QQuickItem& item);
// The middle of an item, in its window.
QPoint middleOf(const QQuickItem& item);
// The item that `item` is, or stands in, of this kind; null where there is none.
QQuickItem* around(QQuickItem* item, const char* kind);
// Whether it is pressed as a whole: a button of ours, or one of Qt's switches and boxes.
bool isButton(const QQuickItem& item);
// The nearest button around an item, itself included; null where there is none.
QQuickItem* buttonAround(QQuickItem* item);
// How much of an item is drawn, with all that it stands in.
double shownOpacity(const QQuickItem& item);
// The item itself and all that stands in it, hidden ones left out.
void forEachShown(const QQuickItem& item, const std::function<void(const QQuickItem&)>& visit);

}  // namespace quillmar::ui
