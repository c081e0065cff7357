#include "ui/adapters/qt_video_capture.h"

#include <QCameraDevice>
#include <QMediaDevices>
#include <utility>

namespace quillmar::ui {
namespace {

// A wider picture does not help to find a code, and costs time with each frame.
constexpr int widestPicture = 1280;

}  // namespace

SinkPictures::SinkPictures(const QVideoSink& sink, std::function<void(const QImage&)> pictured)
    : pictured_(std::move(pictured)) {
  // Some backends deliver frames on their own thread.
  connect(
      &sink, &QVideoSink::videoFrameChanged, this, [this](const QVideoFrame& frame) { take(frame); },
      Qt::DirectConnection);
}

void SinkPictures::take(const QVideoFrame& frame) {
  const std::scoped_lock lock(mutex_);
  const bool isAwaited = newest_.has_value();
  newest_ = frame;
  if (!isAwaited) {
    QMetaObject::invokeMethod(
        this, [this] { handOn(); }, Qt::QueuedConnection);
  }
}

void SinkPictures::handOn() {
  QVideoFrame frame;
  {
    const std::scoped_lock lock(mutex_);
    frame = *std::exchange(newest_, std::nullopt);
  }
  const QImage picture = frame.toImage();
  if (!picture.isNull()) {
    pictured_(picture.width() > widestPicture ? picture.scaledToWidth(widestPicture) : picture);
  }
}

QtVideoCapture::Running::Running(const QCameraDevice& device, std::function<void(const QImage&)> pictured)
    : pictures(sink, std::move(pictured)), camera(device) {
  session.setVideoSink(&sink);
  session.setCamera(&camera);
}

void QtVideoCapture::start(Listener listener) {
  stop();
  const auto device = QMediaDevices::defaultVideoInput();
  if (device.isNull()) {
    listener.failed(Failure::noCamera);
    return;
  }
  running_ = std::make_unique<Running>(device, std::move(listener.pictured));
  // Queued, because the listener may stop the camera that calls it.
  connect(
      &running_->camera, &QCamera::errorOccurred, this,
      [failed = std::move(listener.failed)] { failed(Failure::refused); }, Qt::QueuedConnection);
  running_->camera.start();
}

void QtVideoCapture::stop() { running_.reset(); }

}  // namespace quillmar::ui
