#pragma once

#include <memory>

#include "platform/common/absent_haptics.h"
#include "platform/common/curl_http_session.h"
#include "platform/common/qrencode_encoder.h"
#include "platform/common/save_retry.h"
#include "platform/common/sqlite_settings_store.h"
#include "platform/linux/fprintd_check.h"
#include "platform/linux/libsecret_item_store.h"
#include "platform/linux/linux_device_info.h"
#include "platform/linux/system_log.h"
#include "platform/platform.h"
#include "platform/simulated/simulated_tunnel.h"
#include "programs/control/machine_ports.h"
#include "programs/quillmar/options.h"
#include "ui/adapters/desktop_portal.h"
#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/qt_camera.h"
#include "ui/adapters/qt_clipboard.h"
#include "ui/adapters/qt_dispatch.h"
#include "ui/adapters/qt_notifications.h"
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

  Platform ports() { return control::portsOf(*this); }

  SystemLog log;
  ui::QtDispatch dispatch;
  SqliteSettingsStore settings;
  CurlHttpSession http;
  // Shown in the window if the tunnel is simulated.
  ui::PermissionPrompt permissionPrompt;
  std::unique_ptr<TunnelService> tunnel;
  LibsecretItemStore secureItems;
  FprintdCheck biometrics{dispatch};
  // Shown in the window while the fingerprint reader waits for a finger.
  ui::BiometricPrompt biometricPrompt{
      {.cancel = [this] { biometrics.cancel(); }, .enterPassword = [this] { biometrics.enterPassword(); }}};
  AbsentHaptics haptics;
  LinuxDeviceInfo deviceInfo;
  ui::QtClipboard clipboard;
  ui::QtNotifications notifications;
  ui::DesktopSettings desktop;
  ui::QtWindowStyle windowStyle{desktop};
  QrencodeEncoder qrEncoder;
  ui::QtCamera camera;
  ui::QtQRReader qrReader{dispatch, camera};

 private:
  std::unique_ptr<TunnelService> makeTunnel(const Options& options);

  const SaveRetry saveRetry_{settings, dispatch};
  const Subscription promptSubscription_ = biometrics.observePrompt(
      [this](const FprintdCheck::Prompt& reason) { biometricPrompt.setReason(reason); });
  ui::DesktopPortal portal_{desktop};
};

}  // namespace quillmar
