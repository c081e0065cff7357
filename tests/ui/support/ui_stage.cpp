#include "tests/ui/support/ui_stage.h"

#include <QCoreApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <stdexcept>

namespace quillmar::ui {
namespace {

bool isInUse(const QQuickItem& item) { return item.isVisible() && item.opacity() > 0; }

QString shownText(const QQuickItem& item) { return item.property("text").toString(); }

// Depth first, topmost drawn first.
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

UiStage::UiStage(const Options& options) : application(options.stored, options.network) {
  desktop.setWishes(options.desktop);
  window_ =
      std::make_unique<Window>(application.app().contentView(), application.machine.qrEncoder, style,
                               Window::Options{.geometryFile = {}, .permissionPrompt = &permissionPrompt});
  window().resize(options.size);
  window_->show();
  window().requestActivate();
  settle();
}

UiStage::~UiStage() = default;

void UiStage::settle() {
  constexpr int rounds = 8;
  constexpr int longerThanAStep = 250;
  for (int round = 0; round < rounds; ++round) {
    application.settle();
    QCoreApplication::processEvents();
    animations_->step(longerThanAStep);
  }
  // Layouts come to rest when a frame is made.
  window().grabWindow();
  QCoreApplication::processEvents();
}

void UiStage::advance(Duration duration) {
  application.advance(duration);
  settle();
}

QImage UiStage::picture() {
  settle();
  return window().grabWindow();
}

QQuickItem* UiStage::find(const QString& text) const {
  return search(*window().contentItem(), [&](const QQuickItem& item) { return shownText(item) == text; });
}

QQuickItem* UiStage::focused() const { return window().activeFocusItem(); }

QString UiStage::focusedName() const { return focused() ? shownText(*focused()) : QString(); }

void UiStage::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(&window(), key, modifiers);
  settle();
}

void UiStage::click(const QString& text) {
  auto* const item = find(text);
  if (!item) {
    throw std::logic_error("nothing shows \"" + text.toStdString() + "\"");
  }
  clickAt(item->mapToScene(item->boundingRect().center()).toPoint());
}

void UiStage::clickAt(QPoint point) {
  QTest::mouseClick(&window(), Qt::LeftButton, Qt::NoModifier, point);
  settle();
}

}  // namespace quillmar::ui
