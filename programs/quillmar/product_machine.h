#pragma once

#include <memory>

#include "platform/common/absent_haptics.h"
#include "platform/common/curl_http_session.h"
#include "platform/common/qrencode_encoder.h"
#include "platform/common/sqlite_settings_store.h"
#include "platform/linux/fprintd_check.h"
#include "platform/linux/libsecret_item_store.h"
#include "platform/linux/linux_device_info.h"
#include "platform/linux/system_log.h"
#include "platform/platform.h"
#include "platform/simulated/simulated_tunnel.h"
#include "programs/quillmar/options.h"
#include "ui/adapters/desktop_portal.h"
#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/qt_camera.h"
#include "ui/adapters/qt_clipboard.h"
#include "ui/adapters/qt_dispatch.h"
#include "ui/adapters/qt_qr_reader.h"
#include "ui/adapters/qt_window_style.h"
#include "ui/biometric_prompt.h"
#include "ui/permission_prompt.h"

namespace quillmar {

// The adapters of this computer for a program with a window.
class ProductMachine {
 public:
  explicit ProductMachine(const Options& options);
  ProductMachine(const ProductMachine&) = delete;
  ProductMachine& operator=(const ProductMachine&) = delete;
  ~ProductMachine();

  Platform ports();
  const QREncoder& qrEncoder() const { return qrEncoder_; }
  ui::QtWindowStyle& windowStyle() { return windowStyle_; }
  // The camera's pictures, which the window draws.
  ui::CameraFrames& cameraFrames() { return qrReader_.frames(); }
  // Shown in the window if the tunnel is simulated.
  ui::PermissionPrompt& permissionPrompt() { return permissionPrompt_; }
  // Shown in the window while the fingerprint reader waits for a finger.
  ui::BiometricPrompt& biometricPrompt() { return biometricPrompt_; }

 private:
  std::unique_ptr<TunnelService> makeTunnel(const Options& options);

  SystemLog log_;
  ui::QtDispatch dispatch_;
  SqliteSettingsStore settings_;
  CurlHttpSession http_;
  ui::PermissionPrompt permissionPrompt_;
  std::unique_ptr<TunnelService> tunnel_;
  LibsecretItemStore secureItems_;
  FprintdCheck biometrics_{dispatch_};
  ui::BiometricPrompt biometricPrompt_{
      {.cancel = [this] { biometrics_.cancel(); }, .enterPassword = [this] { biometrics_.enterPassword(); }}};
  const Subscription promptSubscription_ = biometrics_.observePrompt(
      [this](const FprintdCheck::Prompt& reason) { biometricPrompt_.setReason(reason); });
  AbsentHaptics haptics_;
  LinuxDeviceInfo deviceInfo_;
  ui::QtClipboard clipboard_;
  ui::DesktopSettings desktop_;
  ui::DesktopPortal portal_{desktop_};
  ui::QtWindowStyle windowStyle_{desktop_};
  QrencodeEncoder qrEncoder_;
  ui::QtCamera camera_;
  ui::QtQRReader qrReader_{dispatch_, camera_};
};

}  // namespace quillmar
