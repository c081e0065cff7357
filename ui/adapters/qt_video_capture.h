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

// Turns the frames of a video sink into pictures, on the thread that made it. Where frames come faster than
// that goes, the newest wins.
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

// The default camera, by Qt Multimedia.
class QtVideoCapture final : public QObject, public VideoCapture {
 public:
  void start(Listener listener) override;
  void stop() override;

 private:
  // Ends in the opposite order: the camera first.
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
