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

// QR codes in a camera's pictures, in files, on the clipboard and on the screen. Needs a QGuiApplication; the
// pictures are searched on background queues. What it borrows must outlive it.
class QtQRReader final : public QRReader {
 public:
  // The portal is asked on this bus; on the session's where none is named.
  QtQRReader(Dispatch& dispatch, Camera& camera, std::optional<QDBusConnection> bus = std::nullopt)
      : dispatch_(dispatch), camera_(camera), bus_(std::move(bus)) {}
  ~QtQRReader() override;

  // What the camera sees while it runs, searched or not.
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
  // What waits for the person's answer ends with this.
  QObject questions_;
  std::shared_ptr<Session> session_;
};

}  // namespace quillmar::ui
