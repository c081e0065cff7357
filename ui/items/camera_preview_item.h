#pragma once

#include <QtQml/qqmlregistration.h>

#include "ui/items/image_item.h"

namespace quillmar::ui {

// The camera's picture, mirrored, so that a code is easy to bring into view. It covers the item and is
// cropped to it; nothing is drawn while the camera is off.
class CameraPreviewItem : public quillmar::ui::ImageItem {
  Q_OBJECT
  QML_NAMED_ELEMENT(CameraPreviewFrame)
  // The radius of the corners.
  Q_PROPERTY(qreal radius READ radius WRITE setRadius NOTIFY radiusChanged)

 public:
  using ImageItem::ImageItem;

  qreal radius() const { return radius_; }
  void setRadius(qreal radius);

 Q_SIGNALS:
  void radiusChanged();

 protected:
  QImage draw(QSize pixels) const override;
  void componentComplete() override;

 private:
  qreal radius_ = 0;
};

}  // namespace quillmar::ui
