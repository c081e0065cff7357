#pragma once

#include <filesystem>
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

// The application's window. It shows the screen that is the root's member `screen`, and the sheets that
// screens present. Everything it borrows must outlive it.
class Window {
 public:
  struct Options {
    // Keeps the window's place and size; empty: they are not kept.
    std::filesystem::path stateFile;
    // Shown in the window if the tunnel is simulated.
    PermissionPrompt* permissionPrompt = nullptr;
    // Shown while the fingerprint reader waits for a finger.
    BiometricPrompt* biometricPrompt = nullptr;
    // The camera's picture, if there may be a camera.
    CameraFrames* cameraFrames = nullptr;
    // The notices outside the window, whose switch is on a screen.
    ObservableObject* notices = nullptr;
  };

  Window(ObservableObject& root, const QREncoder& qrEncoder, QtWindowStyle& style, Options options);
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  ~Window();

  void show();
  // Shows the window again if it was closed or minimised, and brings it to the front.
  void raise();
  QQuickWindow& quickWindow() const { return *window_; }

 private:
  struct Parts;

  void keepState() const;

  std::unique_ptr<Parts> parts_;
  QQuickWindow* window_;
};

}  // namespace quillmar::ui
