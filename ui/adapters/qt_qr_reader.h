#pragma once

#include <QDBusConnection>
#include <QObject>
#include <memory>
#include <optional>
#include <string>

#include "platform/dispatch.h"
#include "platform/qr_reader.h"
#include "ui/adapters/camera.h"
#include "ui/camera_frames.h"

namespace quillmar::ui {

// Reads QR codes from camera pictures, files, the clipboard and the screen. Needs a QGuiApplication.
// Pictures are searched on background queues. The constructor's arguments must outlive it.
class QtQRReader final : public QRReader {
 public:
  // `bus` reaches the portal; nullopt means the session bus.
  QtQRReader(Dispatch& dispatch, Camera& camera, std::optional<QDBusConnection> bus = std::nullopt)
      : dispatch_(dispatch), camera_(camera), bus_(std::move(bus)) {}
  ~QtQRReader() override;

  // The frames of the running camera, searched or not.
  CameraFrames& frames() { return frames_; }

  CameraState camera() const override { return camera_.state(); }
  Subscription observeCamera(std::function<void()> changed) override {
    return camera_.observe(std::move(changed));
  }
  void startRunning(BatchHandler handler) override;
  void stopRunning() override;

  void readPicture(const std::string& path, Reply reply) override;
  void readClipboard(Reply reply) override;
  void readScreen(Reply reply) override;

 private:
  class Session;

  Dispatch& dispatch_;
  Camera& camera_;
  const std::optional<QDBusConnection> bus_;
  CameraFrames frames_;
  // Owns the requests that wait for the person's answer; they end with it.
  QObject questions_;
  std::shared_ptr<Session> session_;
};

}  // namespace quillmar::ui
