#include "ui/items/picture_item.h"

#include <QImageReader>
#include <algorithm>

namespace quillmar::ui {

QImage readDrawing(const QString& file, int side) {
  // With the format given, the reader does not load the plugins of the others.
  QImageReader reader(file, "svg");
  reader.setScaledSize(QSize(side, side));
  QImage image = reader.read();
  if (image.isNull()) {
    qWarning("%s cannot be drawn: %s", qUtf8Printable(file), qUtf8Printable(reader.errorString()));
  }
  return image;
}

void PictureItem::setName(const QString& name) {
  if (name_ != name) {
    name_ = name;
    redraw();
    Q_EMIT nameChanged();
  }
}

QImage PictureItem::draw(QSize pixels) const {
  return readDrawing(QStringLiteral(":/quillmar/images/%1.svg").arg(name_),
                     std::min(pixels.width(), pixels.height()));
}

}  // namespace quillmar::ui
