#pragma once

#include <QtQml/qqmlregistration.h>

#include <QColor>
#include <QString>

#include "ui/items/image_item.h"

namespace quillmar::ui {

// A symbol of ui/items/symbols.h, tinted, centred in the item and rendered at the screen's resolution.
class SymbolItem : public quillmar::ui::ImageItem {
  Q_OBJECT
  QML_NAMED_ELEMENT(Symbol)
  Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
  Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

 public:
  using ImageItem::ImageItem;

  QString name() const { return name_; }
  void setName(const QString& name);
  QColor color() const { return color_; }
  void setColor(const QColor& color);

 Q_SIGNALS:
  void nameChanged();
  void colorChanged();

 protected:
  QImage draw(QSize pixels) const override;

 private:
  QString name_;
  QColor color_ = Qt::black;
};

}  // namespace quillmar::ui
