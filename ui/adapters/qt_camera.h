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

// The path of the program's VideoCaptureModule; empty if it is not installed.
QString cameraModule();

// This computer's camera. The system's device files tell whether there is one. The first start loads Qt
// Multimedia, on a thread of its own.
class QtCamera final : public QObject, public Camera {
 public:
  struct Options {
    QString deviceDirectory = QStringLiteral("/dev");
    // The VideoCaptureModule's file; found by `cameraModule` if empty.
    QString module{};
  };

  QtCamera() : QtCamera(Options()) {}
  explicit QtCamera(Options options);
  ~QtCamera() override;

  CameraState state() const override;
  // A new observer lets a failed camera be tried again.
  Subscription observe(std::function<void()> changed) override;
  void start(PictureHandler handler) override;
  void stop() override;

 private:
  class Worker;
  // True while pictures are wanted.
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
  // Lives on `thread_`.
  Worker* worker_ = nullptr;
};

}  // namespace quillmar::ui
