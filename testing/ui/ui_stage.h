#pragma once

#include <QAnimationDriver>
#include <QImage>
#include <QPoint>
#include <QSize>
#include <QString>
#include <QVariantAnimation>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "child/protection_notices.h"
#include "testing/fake_notifications.h"
#include "testing/test_application.h"
#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/qt_window_style.h"
#include "ui/permission_prompt.h"
#include "ui/window.h"

class QQuickItem;

namespace quillmar::ui {

// Animations that advance only on request. A process has one such clock; all stages share it.
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
  // Qt runs pauses in real time if nothing else is running, so this animation never ends.
  QVariantAnimation endless_;
};

// A whole application with its window, in virtual time. Animations end at once.
class UiStage {
 public:
  struct Options {
    StoredSettings stored{};
    std::optional<TestApplication::Network> network{};
    TestApplication::MakeTunnel makeTunnel{};
    QSize size{390, 844};
    // With such a file the window has the size that it remembers, instead of `size`.
    std::filesystem::path stateFile{};
    DesktopSettings::Wishes desktop{.dark = false};
  };

  UiStage() : UiStage(Options()) {}
  explicit UiStage(const Options& options);
  ~UiStage();

  TestApplication application;
  DesktopSettings desktop;
  QtWindowStyle style{desktop};
  PermissionPrompt permissionPrompt;
  FakeNotifications notifications;
  ProtectionNotices notices{application.environment(), notifications, true};

  QQuickWindow& window() const { return window_->quickWindow(); }
  // Runs everything that is due and finishes all transitions.
  void settle();
  // Advances virtual time, then settles.
  void advance(Duration duration);
  // Runs everything that is due and advances the transitions by this much only.
  void step(Duration duration);
  QImage picture();

  // The first enabled item with this text or name, or null.
  QQuickItem* find(const QString& text) const;
  bool shows(const QString& text) const { return find(text) != nullptr; }
  // The first enabled control with this name, or null.
  QQuickItem* control(const QString& name) const;
  // The same; throws std::logic_error if there is none.
  QQuickItem& requiredControl(const QString& name) const;
  QQuickItem* focused() const;
  // The accessible name of the focused item.
  QString focusedName() const;
  // Focuses it with the reason of the Tab key.
  void focusOn(const QString& name);
  // Presses Tab until this control has the focus.
  void tabTo(const QString& name);

  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  void type(const QString& text);
  void click(const QString& text);
  void clickAt(QPoint point, Qt::MouseButton button = Qt::LeftButton);
  // Presses at the point and moves by `way` in small steps. Releases, unless `holdOn`.
  enum class Pointer { mouse, finger };
  enum class Ending { letGo, holdOn };
  void drag(Pointer pointer, QPoint from, QPoint way, Ending ending = Ending::letGo);
  void letGo(Pointer pointer, QPoint at);
  void tap(QPoint point);
  // Moves the mouse there without pressing.
  void pointAt(QPoint point);

 private:
  void followLook();

  const std::shared_ptr<SteppedAnimations> animations_ = SteppedAnimations::shared();
  std::unique_ptr<Window> window_;
  Subscription look_;
};

// The name that a screen reader announces; empty if there is none.
QString accessibleName(const QQuickItem& item);
// Whether a screen reader announces it as checked.
bool isChecked(const QQuickItem& item);
// In window coordinates.
QPoint middleOf(const QQuickItem& item);
// The item itself or its nearest ancestor of this type, or null.
QQuickItem* around(QQuickItem* item, const char* kind);
// Whether it is pressed as a whole: a button of ours, or a switch or check box of Qt's.
bool isButton(const QQuickItem& item);
// The item itself or its nearest ancestor that is a button, or null.
QQuickItem* buttonAround(QQuickItem* item);
// The opacity of the item, multiplied by that of its ancestors.
double shownOpacity(const QQuickItem& item);
// Visits the item and its visible descendants.
void forEachShown(const QQuickItem& item, const std::function<void(const QQuickItem&)>& visit);

}  // namespace quillmar::ui
