#pragma once

#include <QCamera>
#include <QImage>
#include <QMediaCaptureSession>
#include <QObject>
#include <QVideoFrame>
#include <QVideoSink>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "ui/adapters/video_capture.h"

namespace quillmar::ui {

// Converts the frames of a video sink to pictures, on the thread that created it. If frames come faster than
// that, only the newest is converted.
class SinkPictures final : public QObject {
 public:
  SinkPictures(const QVideoSink& sink, std::function<void(const QImage&)> pictured);

 private:
  void take(const QVideoFrame& frame);
  void handOn();

  const std::function<void(const QImage&)> pictured_;
  std::mutex mutex_;
  std::optional<QVideoFrame> newest_;
};

// The default camera, through Qt Multimedia.
class QtVideoCapture final : public QObject, public VideoCapture {
 public:
  void start(Listener listener) override;
  void stop() override;

 private:
  // Destroyed in reverse order: the camera first.
  struct Running {
    explicit Running(const QCameraDevice& device, std::function<void(const QImage&)> pictured);

    QVideoSink sink;
    SinkPictures pictures;
    QMediaCaptureSession session;
    QCamera camera;
  };

  std::unique_ptr<Running> running_;
};

}  // namespace quillmar::ui
