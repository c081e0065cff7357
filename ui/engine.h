#pragma once

#include <QQmlEngine>

namespace quillmar {
class QREncoder;
}

namespace quillmar::ui {

class CameraFrames;
class QtWindowStyle;

// A QML engine that holds what the items of the Quillmar module need from outside.
class Engine final : public QQmlEngine {
  Q_OBJECT

 public:
  Engine(const QREncoder& qrEncoder, QtWindowStyle& windowStyle)
      : qrEncoder_(qrEncoder), windowStyle_(windowStyle) {}

  const QREncoder& qrEncoder() const { return qrEncoder_; }
  QtWindowStyle& windowStyle() const { return windowStyle_; }
  // Null if no camera picture is shown.
  CameraFrames* cameraFrames() const { return cameraFrames_; }
  void setCameraFrames(CameraFrames* frames) { cameraFrames_ = frames; }
  // The bridge of the notices; null if the program shows none.
  QObject* notices() const { return notices_; }
  void setNotices(QObject* notices) { notices_ = notices; }

 private:
  const QREncoder& qrEncoder_;
  QtWindowStyle& windowStyle_;
  CameraFrames* cameraFrames_ = nullptr;
  QObject* notices_ = nullptr;
};

}  // namespace quillmar::ui
