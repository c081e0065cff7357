#pragma once

#include <QtQml/qqmlregistration.h>

#include <QColor>
#include <QQuickItem>

namespace quillmar::ui {

// The shadow of a rounded rectangle as large as the item, `depth` wide on every side. Its corners are drawn
// once and the rest is stretched between them, so it costs the same at every size.
class SoftShadowItem : public QQuickItem {
  Q_OBJECT
  QML_NAMED_ELEMENT(SoftShadow)
  Q_PROPERTY(QColor color MEMBER color_ WRITE setColor NOTIFY changed)
  Q_PROPERTY(double corner MEMBER corner_ WRITE setCorner NOTIFY changed)
  Q_PROPERTY(double depth MEMBER depth_ WRITE setDepth NOTIFY changed)

 public:
  explicit SoftShadowItem(QQuickItem* parent = nullptr);

  void setColor(const QColor& color) { assign(color_, color); }
  void setCorner(double corner) { assign(corner_, corner); }
  void setDepth(double depth) { assign(depth_, depth); }

 Q_SIGNALS:
  void changed();

 protected:
  QSGNode* updatePaintNode(QSGNode* former, UpdatePaintNodeData* data) override;
  void geometryChange(const QRectF& present, const QRectF& former) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;

 private:
  template <class T>
  void assign(T& member, const T& value) {
    if (member != value) {
      member = value;
      imageIsStale_ = true;
      update();
      Q_EMIT changed();
    }
  }

  QColor color_ = Qt::black;
  double corner_ = 0;
  double depth_ = 0;
  bool imageIsStale_ = true;
};

}  // namespace quillmar::ui
