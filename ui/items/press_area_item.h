#pragma once

#include <QtQml/qqmlregistration.h>

#include <QPointer>
#include <QQuickItem>
#include <QString>
#include <optional>

namespace quillmar::ui {

// An area pressed by pointer, Space, Return or a screen reader. `background` fills it, `contentItem` lies
// within the padding. Qt Quick Templates has the same, but loading that module would slow down every start.
class PressAreaItem : public QQuickItem {
  Q_OBJECT
  QML_NAMED_ELEMENT(PressArea)
  Q_PROPERTY(QString text MEMBER text_ NOTIFY textChanged)
  Q_PROPERTY(bool down READ isDown NOTIFY downChanged)
  Q_PROPERTY(bool hovered READ isHovered NOTIFY hoveredChanged)
  Q_PROPERTY(bool hoverEnabled READ acceptHoverEvents WRITE setHoverEnabled NOTIFY hoverEnabledChanged)
  Q_PROPERTY(bool visualFocus READ hasVisualFocus NOTIFY visualFocusChanged)
  Q_PROPERTY(Qt::FocusPolicy focusPolicy READ focusPolicy WRITE setFocusPolicy NOTIFY focusPolicyChanged)
  Q_PROPERTY(double padding READ padding WRITE setPadding NOTIFY paddingChanged)
  Q_PROPERTY(double leftPadding READ leftPadding WRITE setLeftPadding NOTIFY paddingChanged)
  Q_PROPERTY(double rightPadding READ rightPadding WRITE setRightPadding NOTIFY paddingChanged)
  Q_PROPERTY(double implicitContentWidth READ implicitContentWidth NOTIFY implicitContentWidthChanged)
  Q_PROPERTY(double implicitContentHeight READ implicitContentHeight NOTIFY implicitContentHeightChanged)
  Q_PROPERTY(QQuickItem* background READ background WRITE setBackground NOTIFY backgroundChanged)
  Q_PROPERTY(QQuickItem* contentItem READ contentItem WRITE setContentItem NOTIFY contentItemChanged)

 public:
  explicit PressAreaItem(QQuickItem* parent = nullptr);

  bool isDown() const { return isDown_; }
  bool isHovered() const { return isHovered_; }
  void setHoverEnabled(bool enabled);
  // Whether the keyboard brought the focus here.
  bool hasVisualFocus() const { return hasVisualFocus_; }
  Qt::FocusPolicy focusPolicy() const { return focusPolicy_; }
  void setFocusPolicy(Qt::FocusPolicy policy);

  double padding() const { return padding_; }
  double leftPadding() const { return leftPadding_.value_or(padding_); }
  double rightPadding() const { return rightPadding_.value_or(padding_); }
  void setPadding(double padding);
  void setLeftPadding(double padding);
  void setRightPadding(double padding);

  double implicitContentWidth() const { return contentItem_ ? contentItem_->implicitWidth() : 0; }
  double implicitContentHeight() const { return contentItem_ ? contentItem_->implicitHeight() : 0; }
  QQuickItem* background() const { return background_; }
  QQuickItem* contentItem() const { return contentItem_; }
  // The former item is destroyed.
  void setBackground(QQuickItem* item);
  void setContentItem(QQuickItem* item);

  // Assistive technologies call these by their names.
  Q_INVOKABLE void accessiblePressAction();
  Q_INVOKABLE void accessibleToggleAction() { accessiblePressAction(); }

 Q_SIGNALS:
  void clicked();
  void textChanged();
  void downChanged();
  void hoveredChanged();
  void hoverEnabledChanged();
  void visualFocusChanged();
  void focusPolicyChanged();
  void paddingChanged();
  void implicitContentWidthChanged();
  void implicitContentHeightChanged();
  void backgroundChanged();
  void contentItemChanged();

 protected:
  void componentComplete() override;
  void geometryChange(const QRectF& present, const QRectF& former) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseUngrabEvent() override;
  void hoverEnterEvent(QHoverEvent* event) override;
  void hoverLeaveEvent(QHoverEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  using Change = void (PressAreaItem::*)();

  void assign(bool& member, bool value, Change changed);
  void assignPadding(std::optional<double>& member, double value);
  void letGo() { assign(isDown_, false, &PressAreaItem::downChanged); }
  void click();
  void rest();
  void showCursor();
  void layOut();

  QString text_;
  bool isDown_ = false;
  bool isHovered_ = false;
  bool hasVisualFocus_ = false;
  Qt::FocusPolicy focusPolicy_ = Qt::NoFocus;
  double padding_ = 0;
  std::optional<double> leftPadding_;
  std::optional<double> rightPadding_;
  QPointer<QQuickItem> background_;
  QPointer<QQuickItem> contentItem_;
};

}  // namespace quillmar::ui
