#include "ui/items/camera_preview_item.h"

#include <QPainter>
#include <QQmlEngine>
#include <QTransform>
#include <algorithm>

#include "ui/camera_frames.h"
#include "ui/engine.h"

namespace quillmar::ui {
namespace {

CameraFrames* framesOf(const QQuickItem& item) {
  const auto* const engine = qobject_cast<Engine*>(qmlEngine(&item));
  return engine ? engine->cameraFrames() : nullptr;
}

// Centres the picture and scales it until it covers the area.
QTransform filling(QSizeF area, QSizeF picture) {
  const qreal scale = std::max(area.width() / picture.width(), area.height() / picture.height());
  return QTransform()
      .translate(area.width() / 2, area.height() / 2)
      .scale(-scale, scale)
      .translate(-picture.width() / 2, -picture.height() / 2);
}

}  // namespace

void CameraPreviewItem::setRadius(qreal radius) {
  if (radius_ != radius) {
    radius_ = radius;
    redraw();
    Q_EMIT radiusChanged();
  }
}

void CameraPreviewItem::componentComplete() {
  QQuickItem::componentComplete();
  if (auto* const frames = framesOf(*this)) {
    connect(frames, &CameraFrames::changed, this, [this] { redraw(); });
  }
}

QImage CameraPreviewItem::draw(QSize pixels) const {
  const auto* const frames = framesOf(*this);
  if (!frames || frames->newest().isNull()) {
    return {};
  }
  QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QBrush brush(frames->newest());
  brush.setTransform(filling(pixels, frames->newest().size()));
  const qreal corner = radius_ * pixels.width() / width();
  QPainter painter(&image);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
  painter.setPen(Qt::NoPen);
  painter.setBrush(brush);
  painter.drawRoundedRect(image.rect(), corner, corner);
  return image;
}

}  // namespace quillmar::ui
