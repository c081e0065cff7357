#pragma once

#include <QtQml/qqmlregistration.h>

#include <QString>

#include "ui/items/image_item.h"

namespace quillmar::ui {

// Renders a resource's SVG file as a square of `side` pixels; a null image, with a warning, if it cannot be
// read.
QImage readDrawing(const QString& file, int side);

// A drawing of ui/images, by name, rendered at the screen's resolution.
class PictureItem : public quillmar::ui::ImageItem {
  Q_OBJECT
  QML_NAMED_ELEMENT(Picture)
  Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)

 public:
  using ImageItem::ImageItem;

  QString name() const { return name_; }
  void setName(const QString& name);

 Q_SIGNALS:
  void nameChanged();

 protected:
  QImage draw(QSize pixels) const override;

 private:
  QString name_;
};

}  // namespace quillmar::ui
