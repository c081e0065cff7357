#include "ui/items/symbol_item.h"

#include <QPainter>
#include <algorithm>

#include "ui/bridge/shown_text.h"
#include "ui/items/picture_item.h"
#include "ui/items/symbols.h"

namespace quillmar::ui {
namespace {

// The symbol's alpha mask; its own colour is ignored.
QImage readSymbol(const QString& name, int side) {
  const auto file = symbolFile(name.toStdString());
  if (file.empty()) {
    qWarning("no symbol is named \"%s\"", qUtf8Printable(name));
    return {};
  }
  return readDrawing(QStringLiteral(":/quillmar/icons/%1.svg").arg(exactText(file)), side);
}

}  // namespace

void SymbolItem::setName(const QString& name) {
  if (name_ != name) {
    name_ = name;
    redraw();
    Q_EMIT nameChanged();
  }
}

void SymbolItem::setColor(const QColor& color) {
  if (color_ != color) {
    color_ = color;
    redraw();
    Q_EMIT colorChanged();
  }
}

QImage SymbolItem::draw(QSize pixels) const {
  if (name_.isEmpty()) {
    return {};
  }
  const int side = std::min(pixels.width(), pixels.height());
  const QImage symbol = readSymbol(name_, side);
  if (symbol.isNull()) {
    return {};
  }
  QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.drawImage((pixels.width() - side) / 2, (pixels.height() - side) / 2, symbol);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(image.rect(), color_);
  return image;
}

}  // namespace quillmar::ui
