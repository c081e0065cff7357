#pragma once

#include <QImage>
#include <QtPlugin>
#include <functional>
#include <memory>

namespace quillmar::ui {

// A camera that runs. Lives on one thread with an event loop, on which it is used and destroyed.
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

// The module that makes them. It stands in a file of its own because Qt Multimedia, with the sound libraries
// behind it, would hold up the start of a program that hardly ever needs a camera.
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
