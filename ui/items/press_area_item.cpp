#include "ui/items/press_area_item.h"

#include <QCursor>
#include <algorithm>

#include "ui/items/key_focus.h"

namespace quillmar::ui {
namespace {

bool replaces(QPointer<QQuickItem>& member, QQuickItem* item) {
  if (member == item) {
    return false;
  }
  if (member) {
    member->setParentItem(nullptr);
    member->deleteLater();
  }
  member = item;
  return true;
}

}  // namespace

PressAreaItem::PressAreaItem(QQuickItem* parent) : QQuickItem(parent) {
  setAcceptedMouseButtons(Qt::LeftButton);
}

void PressAreaItem::setHoverEnabled(bool enabled) {
  if (acceptHoverEvents() != enabled) {
    setAcceptHoverEvents(enabled);
    showCursor();
    Q_EMIT hoverEnabledChanged();
  }
}

void PressAreaItem::setFocusPolicy(Qt::FocusPolicy policy) {
  if (focusPolicy_ != policy) {
    focusPolicy_ = policy;
    setActiveFocusOnTab((policy & Qt::TabFocus) == Qt::TabFocus);
    Q_EMIT focusPolicyChanged();
  }
}

void PressAreaItem::setPadding(double padding) {
  if (padding_ != padding) {
    padding_ = padding;
    layOut();
    Q_EMIT paddingChanged();
  }
}

void PressAreaItem::setLeftPadding(double padding) { assignPadding(leftPadding_, padding); }

void PressAreaItem::setRightPadding(double padding) { assignPadding(rightPadding_, padding); }

void PressAreaItem::assignPadding(std::optional<double>& member, double value) {
  if (member != value) {
    member = value;
    layOut();
    Q_EMIT paddingChanged();
  }
}

void PressAreaItem::setBackground(QQuickItem* item) {
  if (!replaces(background_, item)) {
    return;
  }
  if (item) {
    item->setParentItem(this);
    item->setZ(-1);
  }
  layOut();
  Q_EMIT backgroundChanged();
}

void PressAreaItem::setContentItem(QQuickItem* item) {
  if (!replaces(contentItem_, item)) {
    return;
  }
  if (item) {
    item->setParentItem(this);
    connect(item, &QQuickItem::implicitWidthChanged, this, &PressAreaItem::implicitContentWidthChanged);
    connect(item, &QQuickItem::implicitHeightChanged, this, &PressAreaItem::implicitContentHeightChanged);
  }
  layOut();
  Q_EMIT contentItemChanged();
  Q_EMIT implicitContentWidthChanged();
  Q_EMIT implicitContentHeightChanged();
}

void PressAreaItem::accessiblePressAction() {
  if (isEnabled()) {
    Q_EMIT clicked();
  }
}

void PressAreaItem::componentComplete() {
  QQuickItem::componentComplete();
  layOut();
}

void PressAreaItem::geometryChange(const QRectF& present, const QRectF& former) {
  QQuickItem::geometryChange(present, former);
  layOut();
}

void PressAreaItem::itemChange(ItemChange change, const ItemChangeData& data) {
  QQuickItem::itemChange(change, data);
  if (change == ItemEnabledHasChanged) {
    showCursor();
  }
  if ((change == ItemEnabledHasChanged || change == ItemVisibleHasChanged) && !data.boolValue) {
    rest();
  }
}

void PressAreaItem::mousePressEvent(QMouseEvent* /*event*/) {
  if ((focusPolicy_ & Qt::ClickFocus) == Qt::ClickFocus) {
    forceActiveFocus(Qt::MouseFocusReason);
  }
  assign(isDown_, true, &PressAreaItem::downChanged);
}

void PressAreaItem::mouseMoveEvent(QMouseEvent* event) {
  assign(isDown_, contains(event->position()), &PressAreaItem::downChanged);
}

void PressAreaItem::mouseReleaseEvent(QMouseEvent* /*event*/) { click(); }

// Accepted, because Qt would cancel the second of two quick touches otherwise.
void PressAreaItem::mouseDoubleClickEvent(QMouseEvent* event) { event->accept(); }

void PressAreaItem::mouseUngrabEvent() { letGo(); }

void PressAreaItem::hoverEnterEvent(QHoverEvent* /*event*/) {
  assign(isHovered_, true, &PressAreaItem::hoveredChanged);
}

void PressAreaItem::hoverLeaveEvent(QHoverEvent* /*event*/) {
  assign(isHovered_, false, &PressAreaItem::hoveredChanged);
}

void PressAreaItem::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Space) {
    assign(isDown_, true, &PressAreaItem::downChanged);
  } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    Q_EMIT clicked();
  } else {
    event->ignore();
  }
}

void PressAreaItem::keyReleaseEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Space) {
    event->ignore();
  } else if (!event->isAutoRepeat()) {
    click();
  }
}

void PressAreaItem::focusInEvent(QFocusEvent* event) {
  QQuickItem::focusInEvent(event);
  assign(hasVisualFocus_, isKeyboards(event->reason()), &PressAreaItem::visualFocusChanged);
}

void PressAreaItem::focusOutEvent(QFocusEvent* event) {
  QQuickItem::focusOutEvent(event);
  assign(hasVisualFocus_, false, &PressAreaItem::visualFocusChanged);
  letGo();
}

void PressAreaItem::assign(bool& member, bool value, Change changed) {
  if (member != value) {
    member = value;
    (this->*changed)();
  }
}

// A release clicks only if the item is still held down.
void PressAreaItem::click() {
  if (isDown_) {
    letGo();
    Q_EMIT clicked();
  }
}

void PressAreaItem::rest() {
  letGo();
  assign(isHovered_, false, &PressAreaItem::hoveredChanged);
}

void PressAreaItem::showCursor() {
  if (acceptHoverEvents() && isEnabled()) {
    setCursor(Qt::PointingHandCursor);
  } else {
    unsetCursor();
  }
}

void PressAreaItem::layOut() {
  if (!isComponentComplete()) {
    return;
  }
  if (background_) {
    background_->setSize(size());
  }
  if (contentItem_) {
    contentItem_->setPosition({leftPadding(), padding_});
    contentItem_->setSize(
        {std::max(width() - leftPadding() - rightPadding(), 0.0), std::max(height() - 2 * padding_, 0.0)});
  }
}

}  // namespace quillmar::ui
