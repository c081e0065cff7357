#include "ui/items/image_item.h"

#include <QQuickWindow>
#include <QSGImageNode>
#include <memory>

namespace quillmar::ui {

ImageItem::ImageItem(QQuickItem* parent) : QQuickItem(parent) { setFlag(ItemHasContents); }

void ImageItem::redraw() {
  imageIsStale_ = true;
  update();
}

void ImageItem::geometryChange(const QRectF& present, const QRectF& former) {
  QQuickItem::geometryChange(present, former);
  if (present.size() != former.size()) {
    redraw();
  }
}

void ImageItem::itemChange(ItemChange change, const ItemChangeData& data) {
  QQuickItem::itemChange(change, data);
  if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) {
    redraw();
  }
}

QSGNode* ImageItem::updatePaintNode(QSGNode* former, UpdatePaintNodeData* /*data*/) {
  std::unique_ptr<QSGImageNode> node(static_cast<QSGImageNode*>(former));
  if (!node || imageIsStale_) {
    const QSize pixels = (size() * window()->effectiveDevicePixelRatio()).toSize();
    const QImage image = pixels.isEmpty() ? QImage() : draw(pixels);
    if (image.isNull()) {
      return nullptr;
    }
    if (!node) {
      node.reset(window()->createImageNode());
      node->setOwnsTexture(true);
    }
    node->setTexture(window()->createTextureFromImage(image));
    node->setFiltering(filtering());
    imageIsStale_ = false;
  }
  node->setRect(boundingRect());
  return node.release();
}

}  // namespace quillmar::ui
