#pragma once

#include <QAnimationDriver>
#include <QImage>
#include <QPoint>
#include <QSize>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "tests/support/test_application.h"
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

  SteppedAnimations() { install(); }
  ~SteppedAnimations() override { uninstall(); }

  void step(qint64 milliseconds) {
    elapsed_ += milliseconds;
    advance();
  }
  qint64 elapsed() const override { return elapsed_; }

 private:
  qint64 elapsed_ = 0;
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
  QImage picture();

  // The first item in use that shows this text, or has it as its name; null where there is none.
  QQuickItem* find(const QString& text) const;
  bool shows(const QString& text) const { return find(text) != nullptr; }
  QQuickItem* focused() const;
  // The name under which a screen reader knows the item with the focus.
  QString focusedName() const;

  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  void click(const QString& text);
  void clickAt(QPoint point);

 private:
  const std::shared_ptr<SteppedAnimations> animations_ = SteppedAnimations::shared();
  std::unique_ptr<Window> window_;
};

}  // namespace quillmar::ui
