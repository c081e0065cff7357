#pragma once

#include <QtQml/qqmlregistration.h>

#include <QColor>

#include "ui/items/image_item.h"

namespace quillmar::ui {

// A rounded rectangle with a vertical gradient of two colours, antialiased on every renderer.
class GradientPlateItem : public quillmar::ui::ImageItem {
  Q_OBJECT
  QML_NAMED_ELEMENT(GradientPlate)
  Q_PROPERTY(QColor from MEMBER from_ WRITE setFrom NOTIFY changed)
  Q_PROPERTY(QColor to MEMBER to_ WRITE setTo NOTIFY changed)
  Q_PROPERTY(double radius MEMBER radius_ WRITE setRadius NOTIFY changed)

 public:
  using ImageItem::ImageItem;

  void setFrom(const QColor& color) { assign(from_, color); }
  void setTo(const QColor& color) { assign(to_, color); }
  void setRadius(double radius) { assign(radius_, radius); }

 Q_SIGNALS:
  void changed();

 protected:
  QImage draw(QSize pixels) const override;

 private:
  template <class T>
  void assign(T& member, const T& value) {
    if (member != value) {
      member = value;
      redraw();
      Q_EMIT changed();
    }
  }

  QColor from_;
  QColor to_;
  double radius_ = 0;
};

}  // namespace quillmar::ui
