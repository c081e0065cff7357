#pragma once

#include <QQmlEngine>

namespace quillmar {
class QREncoder;
}

namespace quillmar::ui {

class QtWindowStyle;

// A QML engine with what the items of the Quillmar module need from outside.
class Engine final : public QQmlEngine {
  Q_OBJECT

 public:
  Engine(const QREncoder& qrEncoder, QtWindowStyle& windowStyle)
      : qrEncoder_(qrEncoder), windowStyle_(windowStyle) {}

  const QREncoder& qrEncoder() const { return qrEncoder_; }
  QtWindowStyle& windowStyle() const { return windowStyle_; }

 private:
  const QREncoder& qrEncoder_;
  QtWindowStyle& windowStyle_;
};

}  // namespace quillmar::ui
