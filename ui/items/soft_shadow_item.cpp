#include "ui/items/soft_shadow_item.h"

#include <QImage>
#include <QQuickWindow>
#include <QSGNinePatchNode>
#include <algorithm>
#include <cmath>
#include <memory>

namespace quillmar::ui {
namespace {

// The distance of a point from a rounded square around the origin; negative inside.
double distanceOutside(double x, double y, double half, double corner) {
  const double dx = std::abs(x) - half + corner;
  const double dy = std::abs(y) - half + corner;
  const double aside = std::max(dx, 0.0);
  const double below = std::max(dy, 0.0);
  return std::sqrt(aside * aside + below * below) + std::min(std::max(dx, dy), 0.0) - corner;
}

// 1 deep inside, 0 far outside, smooth in between.
double coverage(double distance, double reach) {
  const double t = std::clamp((reach - distance) / (2 * reach), 0.0, 1.0);
  return t * t * (3 - 2 * t);
}

// The smallest image that holds the four corners and a stretch between them. The corners mirror one another.
// Lengths are in device pixels.
QImage drawCorners(const QColor& color, double corner, double reach) {
  const int last = 2 * static_cast<int>(std::ceil(2 * reach + corner));
  const double middle = (last + 1) / 2.0;
  const double half = middle - reach;
  const QRgb opaque = color.rgb();
  const double fullAlpha = 255.0 * color.alphaF();
  QImage image(last + 1, last + 1, QImage::Format_ARGB32_Premultiplied);
  for (int row = 0; row <= last / 2; ++row) {
    auto* const upper = reinterpret_cast<QRgb*>(image.scanLine(row));
    auto* const lower = reinterpret_cast<QRgb*>(image.scanLine(last - row));
    for (int column = 0; column <= last / 2; ++column) {
      const double distance =
          distanceOutside(column + 0.5 - middle, row + 0.5 - middle, half, std::min(corner, half));
      const auto alpha = static_cast<int>(std::lround(fullAlpha * coverage(distance, reach)));
      const QRgb pixel = qPremultiply(qRgba(qRed(opaque), qGreen(opaque), qBlue(opaque), alpha));
      for (QRgb* const line : {upper, lower}) {
        line[column] = line[last - column] = pixel;
      }
    }
  }
  return image;
}

}  // namespace

SoftShadowItem::SoftShadowItem(QQuickItem* parent) : QQuickItem(parent) { setFlag(ItemHasContents); }

void SoftShadowItem::geometryChange(const QRectF& present, const QRectF& former) {
  QQuickItem::geometryChange(present, former);
  update();
}

void SoftShadowItem::itemChange(ItemChange change, const ItemChangeData& data) {
  QQuickItem::itemChange(change, data);
  if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) {
    imageIsStale_ = true;
    update();
  }
}

QSGNode* SoftShadowItem::updatePaintNode(QSGNode* former, UpdatePaintNodeData* /*data*/) {
  std::unique_ptr<QSGNinePatchNode> node(static_cast<QSGNinePatchNode*>(former));
  if (depth_ <= 0 || width() <= 0 || height() <= 0) {
    return nullptr;
  }
  const double ratio = window()->effectiveDevicePixelRatio();
  if (!node || imageIsStale_) {
    if (!node) {
      node.reset(window()->createNinePatchNode());
    }
    node->setTexture(window()->createTextureFromImage(drawCorners(color_, corner_ * ratio, depth_ * ratio)));
    node->setDevicePixelRatio(ratio);
    imageIsStale_ = false;
  }
  const double fixed = std::ceil((2 * depth_ + corner_) * ratio);
  node->setPadding(fixed, fixed, fixed, fixed);
  node->setBounds(boundingRect().adjusted(-depth_, -depth_, depth_, depth_));
  node->update();
  return node.release();
}

}  // namespace quillmar::ui
