#pragma once

#include <QtQml/qqmlregistration.h>

#include <QString>

#include "ui/items/image_item.h"

#ifndef Q_MOC_RUN
#include <optional>

#include "platform/qr_encoder.h"
#endif

namespace quillmar::ui {

// A text's QR code, scaled to the item with sharp edges. The plate under it provides the quiet zone. If the
// text fits no code, the item draws nothing and is not `available`.
class QRCodeItem : public quillmar::ui::ImageItem {
  Q_OBJECT
  QML_NAMED_ELEMENT(QRCode)
  Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
  Q_PROPERTY(bool available READ available NOTIFY textChanged)
  Q_PROPERTY(int modules READ modules NOTIFY textChanged)

 public:
  using ImageItem::ImageItem;

  QString text() const { return text_; }
  void setText(const QString& text);
  bool available() const { return modules_.has_value(); }
  // The number of modules in a row.
  int modules() const { return modules_ ? static_cast<int>(modules_->side) : 0; }

 Q_SIGNALS:
  void textChanged();

 protected:
  QImage draw(QSize pixels) const override;
  QSGTexture::Filtering filtering() const override { return QSGTexture::Nearest; }
  void componentComplete() override;

 private:
  void encode();

  QString text_;
  std::optional<QRModules> modules_;
};

}  // namespace quillmar::ui
