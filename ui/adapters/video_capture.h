#pragma once

#include <QImage>
#include <QtPlugin>
#include <functional>
#include <memory>

namespace quillmar::ui {

// A running camera. It is created, used and destroyed on one thread with an event loop.
class VideoCapture {
 public:
  enum class Failure { noCamera, refused };
  // Called on that thread.
  struct Listener {
    std::function<void(const QImage&)> pictured{};
    std::function<void(Failure)> failed{};
  };

  VideoCapture() = default;
  VideoCapture(const VideoCapture&) = delete;
  VideoCapture& operator=(const VideoCapture&) = delete;
  virtual ~VideoCapture() = default;

  virtual void start(Listener listener) = 0;
  virtual void stop() = 0;
};

// Creates VideoCaptures. It is a plugin because Qt Multimedia and its sound libraries would slow down the
// start of a program that rarely needs a camera.
class VideoCaptureModule {
 public:
  VideoCaptureModule() = default;
  VideoCaptureModule(const VideoCaptureModule&) = delete;
  VideoCaptureModule& operator=(const VideoCaptureModule&) = delete;
  virtual ~VideoCaptureModule() = default;

  virtual std::unique_ptr<VideoCapture> make() = 0;
};

}  // namespace quillmar::ui

Q_DECLARE_INTERFACE(quillmar::ui::VideoCaptureModule, "live.quillmar.VideoCaptureModule/1")
