#pragma once

#include <QtQml/qqmlregistration.h>

#include <QImage>
#include <QQuickItem>
#include <QSGTexture>

namespace quillmar::ui {

// An item drawn as one image. It is redrawn only when its size, its screen or its content changes.
class ImageItem : public QQuickItem {
  Q_OBJECT
  QML_ANONYMOUS

 public:
  explicit ImageItem(QQuickItem* parent = nullptr);

 protected:
  // The whole item in device pixels; a null image if there is nothing to show.
  virtual QImage draw(QSize pixels) const = 0;
  virtual QSGTexture::Filtering filtering() const { return QSGTexture::Linear; }
  void redraw();

  QSGNode* updatePaintNode(QSGNode* former, UpdatePaintNodeData* data) override;
  void geometryChange(const QRectF& present, const QRectF& former) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;

 private:
  bool imageIsStale_ = true;
};

}  // namespace quillmar::ui
