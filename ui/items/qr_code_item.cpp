#include "ui/items/qr_code_item.h"

#include <QQmlEngine>
#include <string>

#include "ui/engine.h"

namespace quillmar::ui {

void QRCodeItem::setText(const QString& text) {
  if (text_ != text) {
    text_ = text;
    if (isComponentComplete()) {
      encode();
    }
  }
}

void QRCodeItem::componentComplete() {
  QQuickItem::componentComplete();
  encode();
}

void QRCodeItem::encode() {
  const auto* const engine = qobject_cast<Engine*>(qmlEngine(this));
  modules_ = engine ? engine->qrEncoder().encode(text_.toStdString()) : std::nullopt;
  redraw();
  Q_EMIT textChanged();
}

// One pixel for each module. The renderer scales the image up, without smoothing.
QImage QRCodeItem::draw(QSize /*pixels*/) const {
  if (!modules_) {
    return {};
  }
  const int side = modules();
  QImage image(side, side, QImage::Format_RGB32);
  for (int row = 0; row < side; ++row) {
    for (int column = 0; column < side; ++column) {
      const bool dark = modules_->isDark(static_cast<std::size_t>(row), static_cast<std::size_t>(column));
      image.setPixel(column, row, dark ? qRgb(0, 0, 0) : qRgb(255, 255, 255));
    }
  }
  return image;
}

}  // namespace quillmar::ui
