#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QThread>
#include <atomic>
#include <memory>
#include <optional>

#include "ui/adapters/camera.h"
#include "ui/adapters/video_capture.h"

namespace quillmar::ui {

// The file of the VideoCaptureModule that belongs to the program; empty where it is not installed.
QString cameraModule();

// This computer's camera. Whether there is one is told by the system's device files; Qt Multimedia is loaded
// by the first start, on a thread of its own.
class QtCamera final : public QObject, public Camera {
 public:
  struct Options {
    QString deviceDirectory = QStringLiteral("/dev");
    // The file of the VideoCaptureModule; beside the program where none is named.
    QString module{};
  };

  QtCamera() : QtCamera(Options()) {}
  explicit QtCamera(Options options);
  ~QtCamera() override;

  CameraState state() const override;
  // A camera that failed has another chance with each new observer.
  Subscription observe(std::function<void()> changed) override;
  void start(PictureHandler handler) override;
  void stop() override;

 private:
  class Worker;
  // Pictures are wanted for as long as this holds.
  using Wanted = std::shared_ptr<std::atomic<bool>>;

  void watch();
  void reconsider();
  void fail(VideoCapture::Failure failure);
  void announce();
  VideoCapture::Listener listenerFor(const Wanted& wanted, PictureHandler handler);

  const Options options_;
  Signal<> changed_;
  std::unique_ptr<QFileSystemWatcher> watcher_;
  std::optional<CameraState> failure_;
  CameraState announced_ = CameraState::absent;
  Wanted wanted_;
  QThread thread_;
  // Lives on that thread.
  Worker* worker_ = nullptr;
};

}  // namespace quillmar::ui
