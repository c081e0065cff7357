#include "ui/accessibility.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QGuiApplication>
#include <QList>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>

namespace quillmar::ui {
namespace {

using Interfaces = QList<QAccessibleInterface*>;

// An item may have got its interface before it was said to be ignored, and then keeps it.
bool isIgnored(const QQuickItem& item) {
  return std::ranges::any_of(item.children(), [](const QObject* part) {
    return part->inherits("QQuickAccessibleAttached") && part->property("ignored").toBool();
  });
}

// Collects the accessible items below `item`. An item that has no interface, or is ignored, is replaced by
// its children.
void collectAccessible(const QQuickItem& item, Interfaces& found) {
  for (auto* const child : item.childItems()) {
    auto* const accessible = isIgnored(*child) ? nullptr : QAccessible::queryAccessibleInterface(child);
    if (accessible) {
      found.append(accessible);
    } else {
      collectAccessible(*child, found);
    }
  }
}

QAccessibleInterface* childAtPoint(const Interfaces& children, int x, int y) {
  const auto found = std::find_if(children.rbegin(), children.rend(), [&](const auto* child) {
    return !child->state().invisible && child->rect().contains(x, y);
  });
  return found != children.rend() ? *found : nullptr;
}

class AccessibleWindow final : public QAccessibleObject {
 public:
  explicit AccessibleWindow(QQuickWindow& window) : QAccessibleObject(&window) {}

  QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(qApp); }
  int childCount() const override { return static_cast<int>(children().size()); }
  QAccessibleInterface* child(int index) const override { return children().value(index); }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return static_cast<int>(children().indexOf(child));
  }
  QAccessibleInterface* childAt(int x, int y) const override { return childAtPoint(children(), x, y); }
  QAccessibleInterface* focusChild() const override {
    return QAccessible::queryAccessibleInterface(quickWindow().activeFocusItem());
  }
  QRect rect() const override { return quickWindow().geometry(); }
  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Name ? quickWindow().title() : QString();
  }
  QAccessible::Role role() const override { return QAccessible::Window; }
  QAccessible::State state() const override {
    QAccessible::State state;
    state.active = quickWindow().isActive();
    state.focusable = true;
    state.focused = state.active;
    state.invisible = !quickWindow().isVisible();
    return state;
  }
  QWindow* window() const override { return &quickWindow(); }

 private:
  QQuickWindow& quickWindow() const { return *static_cast<QQuickWindow*>(object()); }

  // The topmost open popup; null if none is open.
  const QQuickItem* front() const {
    const QQuickItem* front = nullptr;
    for (const auto* const layer : quickWindow().contentItem()->childItems()) {
      if (layer->inherits("QQuickOverlay")) {
        for (const auto* const open : layer->childItems()) {
          front = open->inherits("QQuickPopupItem") && open->isVisible() ? open : front;
        }
      }
    }
    return front;
  }
  Interfaces children() const {
    Interfaces found;
    const auto* const popup = front();
    collectAccessible(popup ? *popup : *quickWindow().contentItem(), found);
    return found;
  }
};

// A TextBox. Its accessible name and description are its `spokenName` and `description`.
class AccessibleTextBox final : public QAccessibleObject,
                                public QAccessibleTextInterface,
                                public QAccessibleActionInterface {
 public:
  explicit AccessibleTextBox(QQuickItem& box) : QAccessibleObject(&box) {}

  QAccessibleInterface* parent() const override {
    for (auto* above = box().parentItem(); above; above = above->parentItem()) {
      const bool isRoot = box().window() && above == box().window()->contentItem();
      if (auto* const accessible = isRoot ? nullptr : QAccessible::queryAccessibleInterface(above)) {
        return accessible;
      }
    }
    return QAccessible::queryAccessibleInterface(box().window());
  }
  int childCount() const override { return static_cast<int>(children().size()); }
  QAccessibleInterface* child(int index) const override { return children().value(index); }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return static_cast<int>(children().indexOf(child));
  }
  QAccessibleInterface* childAt(int x, int y) const override { return childAtPoint(children(), x, y); }
  QRect rect() const override { return onScreen({0, 0, box().width(), box().height()}); }
  QAccessible::Role role() const override { return QAccessible::EditableText; }
  QAccessible::State state() const override {
    QAccessible::State state;
    state.focusable = box().activeFocusOnTab();
    state.focused = box().hasActiveFocus();
    state.disabled = !box().isEnabled();
    state.invisible = !box().isVisible() || box().opacity() == 0;
    state.offscreen = box().window() && !box().window()->geometry().intersects(rect());
    state.editable = true;
    state.selectableText = true;
    state.passwordEdit = isHidden();
    return state;
  }
  QWindow* window() const override { return box().window(); }
  QString text(QAccessible::Text kind) const override {
    switch (kind) {
      case QAccessible::Name:
        return box().property("spokenName").toString();
      case QAccessible::Description:
        return box().property("description").toString();
      case QAccessible::Value:
        return accessibleText();
      default:
        return {};
    }
  }
  void* interface_cast(QAccessible::InterfaceType type) override {
    switch (type) {
      case QAccessible::TextInterface:
        return static_cast<QAccessibleTextInterface*>(this);
      case QAccessible::ActionInterface:
        return static_cast<QAccessibleActionInterface*>(this);
      default:
        return nullptr;
    }
  }

  QString text(int from, int to) const override { return accessibleText().mid(from, to - from); }
  int characterCount() const override { return static_cast<int>(accessibleText().size()); }
  int cursorPosition() const override { return box().property("cursorPosition").toInt(); }
  void setCursorPosition(int position) override { box().setProperty("cursorPosition", position); }
  int selectionCount() const override { return selectionStart() < selectionEnd() ? 1 : 0; }
  void selection(int /*index*/, int* from, int* to) const override {
    *from = selectionStart();
    *to = selectionEnd();
  }
  void addSelection(int from, int to) override { setSelection(0, from, to); }
  void removeSelection(int /*index*/) override { QMetaObject::invokeMethod(&box(), "deselect"); }
  void setSelection(int /*index*/, int from, int to) override {
    QMetaObject::invokeMethod(&box(), "select", Q_ARG(int, from), Q_ARG(int, to));
  }
  QRect characterRect(int offset) const override {
    QRectF rect;
    QMetaObject::invokeMethod(&box(), "positionToRectangle", Q_RETURN_ARG(QRectF, rect), Q_ARG(int, offset));
    return onScreen(rect);
  }
  // Not needed for a box of one line.
  int offsetAtPoint(const QPoint& /*point*/) const override { return -1; }
  void scrollToSubstring(int from, int /*to*/) override { setCursorPosition(from); }
  QString attributes(int /*offset*/, int* from, int* to) const override {
    *from = 0;
    *to = characterCount();
    return {};
  }

  QStringList actionNames() const override { return {setFocusAction()}; }
  void doAction(const QString& name) override {
    if (name == setFocusAction()) {
      box().forceActiveFocus();
    }
  }
  QStringList keyBindingsForAction(const QString& /*name*/) const override { return {}; }

 private:
  static constexpr QChar bullet{0x2022};

  QQuickItem& box() const { return *static_cast<QQuickItem*>(object()); }
  // TextInput.Normal is 0.
  bool isHidden() const { return box().property("echoMode").toInt() != 0; }
  QString accessibleText() const {
    const QString written = box().property("text").toString();
    return isHidden() ? QString(written.size(), bullet) : written;
  }
  int selectionStart() const { return box().property("selectionStart").toInt(); }
  int selectionEnd() const { return box().property("selectionEnd").toInt(); }
  QRect onScreen(const QRectF& rect) const {
    const QRect inWindow = box().mapRectToScene(rect).toAlignedRect();
    return box().window() ? inWindow.translated(box().window()->mapToGlobal(QPoint())) : inWindow;
  }
  Interfaces children() const {
    Interfaces found;
    collectAccessible(box(), found);
    return found;
  }
};

// Qt's cache takes ownership of the result.
QAccessibleInterface* makeInterface(const QString& kind, QObject* object) {
  if (kind == QLatin1String("QQuickWindow")) {
    return new AccessibleWindow(*qobject_cast<QQuickWindow*>(object));
  }
  if (kind == QLatin1String("QQuickTextInput")) {
    return new AccessibleTextBox(*qobject_cast<QQuickItem*>(object));
  }
  return nullptr;
}

}  // namespace

void installAccessibility() { QAccessible::installFactory(makeInterface); }

}  // namespace quillmar::ui
