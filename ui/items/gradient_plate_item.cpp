#include "ui/items/gradient_plate_item.h"

#include <QLinearGradient>
#include <QPainter>

namespace quillmar::ui {

QImage GradientPlateItem::draw(QSize pixels) const {
  QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QLinearGradient gradient(0, 0, 0, pixels.height());
  gradient.setColorAt(0, from_);
  gradient.setColorAt(1, to_);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(gradient);
  const double corner = radius_ * pixels.width() / width();
  painter.drawRoundedRect(image.rect(), corner, corner);
  return image;
}

}  // namespace quillmar::ui
