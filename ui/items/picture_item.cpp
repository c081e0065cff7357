#include "ui/items/picture_item.h"

#include <QPainter>
#include <QSvgRenderer>
#include <algorithm>

namespace quillmar::ui {

// Not by QImageReader, which would open every plugin for pictures that is installed.
QImage readDrawing(const QString& file, int side) {
  QSvgRenderer drawing(file);
  if (!drawing.isValid()) {
    qWarning("%s cannot be drawn", qUtf8Printable(file));
    return {};
  }
  QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  drawing.render(&painter);
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
