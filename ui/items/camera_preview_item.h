#pragma once

#include <QtQml/qqmlregistration.h>

#include "ui/items/image_item.h"

namespace quillmar::ui {

// What the camera sees, as in a mirror, so that a code is easy to bring into view. It fills the item, and
// what stands out is cut off; nothing is drawn while the camera does not run.
class CameraPreviewItem : public quillmar::ui::ImageItem {
  Q_OBJECT
  QML_NAMED_ELEMENT(CameraPreviewFrame)
  // Of the corners.
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
