#pragma once

#include <QString>
#include <functional>
#include <memory>

class QQuickWindow;

namespace quillmar {
class ObservableObject;
class QREncoder;
}  // namespace quillmar

namespace quillmar::ui {

class BiometricPrompt;
class CameraFrames;
class ModelBridge;
class PermissionPrompt;
class QtWindowStyle;

// The application's window. It shows the screen that the root's member `screen` holds, and the sheets that
// the screens present. Everything it borrows must outlive it.
class Window {
 public:
  struct Options {
    // Where the window keeps its size; nowhere when empty.
    QString geometryFile;
    // Asked in the window where the tunnel is simulated.
    PermissionPrompt* permissionPrompt = nullptr;
    // Shown while the machine's reader waits for a finger.
    BiometricPrompt* biometricPrompt = nullptr;
    // What the camera sees, where there may be one.
    CameraFrames* cameraFrames = nullptr;
  };

  Window(ObservableObject& root, const QREncoder& qrEncoder, QtWindowStyle& style, Options options);
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  ~Window();

  void show();
  // Shows it again where it was closed or minimised, and brings it to the front.
  void raise();
  QQuickWindow& quickWindow() const { return *window_; }

 private:
  class Geometry;
  struct Parts;

  std::unique_ptr<Parts> parts_;
  QQuickWindow* window_;
};

}  // namespace quillmar::ui
