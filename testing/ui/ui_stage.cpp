#include "testing/ui/ui_stage.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QPointingDevice>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <stdexcept>

#include "app/session/appearance_manager.h"

namespace quillmar::ui {
namespace {

bool isInUse(const QQuickItem& item) { return item.isVisible() && item.opacity() > 0; }

QString shownText(const QQuickItem& item) { return item.property("text").toString(); }

// Depth first, the topmost item first.
bool isControl(const QQuickItem& item) { return item.activeFocusOnTab(); }

QPointingDevice& touchScreen() {
  static const std::unique_ptr<QPointingDevice> device(QTest::createTouchDevice());
  return *device;
}

QQuickItem* search(QQuickItem& item, const std::function<bool(const QQuickItem&)>& matches) {
  if (!isInUse(item)) {
    return nullptr;
  }
  const auto children = item.childItems();
  for (auto child = children.crbegin(); child != children.crend(); ++child) {
    if (auto* const found = search(**child, matches)) {
      return found;
    }
  }
  return matches(item) ? &item : nullptr;
}

}  // namespace

std::shared_ptr<SteppedAnimations> SteppedAnimations::shared() {
  static std::weak_ptr<SteppedAnimations> installed;
  auto animations = installed.lock();
  if (!animations) {
    animations = std::make_shared<SteppedAnimations>();
    installed = animations;
  }
  return animations;
}

SteppedAnimations::SteppedAnimations() {
  install();
  endless_.setStartValue(0);
  endless_.setEndValue(1);
  endless_.setLoopCount(-1);
  endless_.start();
}

UiStage::UiStage(const Options& options) : application(options.stored, options.network, options.makeTunnel) {
  desktop.setWishes(options.desktop);
  followLook();
  window_ = std::make_unique<Window>(
      application.app().contentView(), application.machine.qrEncoder, style,
      Window::Options{
          .stateFile = options.stateFile, .permissionPrompt = &permissionPrompt, .notices = &notices});
  if (options.stateFile.empty()) {
    window().resize(options.size);
  }
  window_->show();
  window().requestActivate();
  settle();
}

UiStage::~UiStage() = default;

// FakeWindowStyle only records the wanted look; this applies it.
void UiStage::followLook() {
  const auto apply = [this] {
    if (!application.machine.windowStyle.styles.empty()) {
      style.setOverrideUserInterfaceStyle(application.machine.windowStyle.styles.back());
    }
  };
  apply();
  look_ = application.environment().appearanceManager()->currentMode.onChange(apply);
}

void UiStage::settle() {
  constexpr int rounds = 8;
  constexpr int longerThanAStep = 250;
  for (int round = 0; round < rounds; ++round) {
    application.settle();
    QCoreApplication::processEvents();
    animations_->step(longerThanAStep);
  }
  // Layouts are finished only when a frame is rendered.
  window().grabWindow();
  QCoreApplication::processEvents();
}

void UiStage::advance(Duration duration) {
  application.advance(duration);
  settle();
}

void UiStage::step(Duration duration) {
  application.settle();
  QCoreApplication::processEvents();
  window().grabWindow();
  QCoreApplication::processEvents();
  animations_->step(duration.count());
  QCoreApplication::processEvents();
}

QImage UiStage::picture() {
  settle();
  return window().grabWindow();
}

QQuickItem* UiStage::find(const QString& text) const {
  return search(*window().contentItem(), [&](const QQuickItem& item) { return shownText(item) == text; });
}

QQuickItem* UiStage::control(const QString& name) const {
  return search(*window().contentItem(),
                [&](const QQuickItem& item) { return isControl(item) && accessibleName(item) == name; });
}

QQuickItem& UiStage::requiredControl(const QString& name) const {
  if (auto* const item = control(name)) {
    return *item;
  }
  throw std::logic_error("no control is called \"" + name.toStdString() + "\"");
}

QQuickItem* UiStage::focused() const { return window().activeFocusItem(); }

QString UiStage::focusedName() const { return focused() ? accessibleName(*focused()) : QString(); }

void UiStage::focusOn(const QString& name) {
  requiredControl(name).forceActiveFocus(Qt::TabFocusReason);
  settle();
}

void UiStage::tabTo(const QString& name) {
  constexpr int moreThanAnyScreenHas = 60;
  for (int i = 0; i < moreThanAnyScreenHas && focusedName() != name; ++i) {
    press(Qt::Key_Tab);
  }
  if (focusedName() != name) {
    throw std::logic_error("the Tab key does not reach \"" + name.toStdString() + "\"");
  }
}

void UiStage::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(&window(), key, modifiers);
  settle();
}

void UiStage::type(const QString& text) {
  for (const QChar letter : text) {
    QTest::keyClick(&window(), letter.toLatin1());
  }
  settle();
}

void UiStage::click(const QString& text) {
  auto* const item = find(text);
  if (!item) {
    throw std::logic_error("nothing shows \"" + text.toStdString() + "\"");
  }
  clickAt(middleOf(*item));
}

void UiStage::clickAt(QPoint point, Qt::MouseButton button) {
  QTest::mouseClick(&window(), button, Qt::NoModifier, point);
  settle();
}

void UiStage::drag(Pointer pointer, QPoint from, QPoint way, Ending ending) {
  constexpr int steps = 20;
  if (pointer == Pointer::mouse) {
    QTest::mousePress(&window(), Qt::LeftButton, Qt::NoModifier, from);
  } else {
    QTest::touchEvent(&window(), &touchScreen()).press(0, from);
  }
  for (int step = 1; step <= steps; ++step) {
    const QPoint at = from + way * step / steps;
    if (pointer == Pointer::mouse) {
      QTest::mouseMove(&window(), at);
    } else {
      QTest::touchEvent(&window(), &touchScreen()).move(0, at);
    }
  }
  settle();
  if (ending == Ending::letGo) {
    letGo(pointer, from + way);
  }
}

void UiStage::letGo(Pointer pointer, QPoint at) {
  if (pointer == Pointer::mouse) {
    QTest::mouseRelease(&window(), Qt::LeftButton, Qt::NoModifier, at);
  } else {
    QTest::touchEvent(&window(), &touchScreen()).release(0, at);
  }
  settle();
}

void UiStage::tap(QPoint point) { drag(Pointer::finger, point, {0, 0}); }

void UiStage::pointAt(QPoint point) {
  // The window of another stage may have left the mouse there, and then Qt reports no movement.
  QTest::mouseMove(&window(), point + QPoint(1, 0));
  QTest::mouseMove(&window(), point);
  settle();
}

QString accessibleName(const QQuickItem& item) {
  auto* const accessible = QAccessible::queryAccessibleInterface(const_cast<QQuickItem*>(&item));
  return accessible ? accessible->text(QAccessible::Name) : QString();
}

bool isChecked(const QQuickItem& item) {
  auto* const accessible = QAccessible::queryAccessibleInterface(const_cast<QQuickItem*>(&item));
  return accessible && accessible->state().checked;
}

QPoint middleOf(const QQuickItem& item) { return item.mapToScene(item.boundingRect().center()).toPoint(); }

QQuickItem* around(QQuickItem* item, const char* kind) {
  while (item && !item->inherits(kind)) {
    item = item->parentItem();
  }
  return item;
}

bool isButton(const QQuickItem& item) {
  return item.inherits("quillmar::ui::PressAreaItem") || item.inherits("QQuickAbstractButton");
}

QQuickItem* buttonAround(QQuickItem* item) {
  while (item && !isButton(*item)) {
    item = item->parentItem();
  }
  return item;
}

double shownOpacity(const QQuickItem& item) {
  double opacity = 1;
  for (const auto* above = &item; above; above = above->parentItem()) {
    opacity *= above->isVisible() ? above->opacity() : 0;
  }
  return opacity;
}

void forEachShown(const QQuickItem& item, const std::function<void(const QQuickItem&)>& visit) {
  if (!isInUse(item)) {
    return;
  }
  visit(item);
  for (const auto* const child : item.childItems()) {
    forEachShown(*child, visit);
  }
}

}  // namespace quillmar::ui
