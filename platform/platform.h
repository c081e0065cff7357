#pragma once

#include <memory>

#include "platform/biometric_check.h"
#include "platform/clipboard.h"
#include "platform/device_info.h"
#include "platform/dispatch.h"
#include "platform/haptics.h"
#include "platform/http_session.h"
#include "platform/log.h"
#include "platform/qr_encoder.h"
#include "platform/qr_reader.h"
#include "platform/secure_item_store.h"
#include "platform/settings_store.h"
#include "platform/tunnel.h"
#include "platform/window_style.h"

namespace quillmar {

// One adapter of each port. The application borrows them; the caller keeps them alive longer.
struct Platform {
  SettingsStore& settings;
  HttpSession& http;
  Dispatch& dispatch;
  Log& log;
  TunnelService& tunnel;
  SecureItemStore& secureItems;
  BiometricCheck& biometrics;
  DeviceInfo& deviceInfo;
  Clipboard& clipboard;
  Haptics& haptics;
  WindowStyle& windowStyle;
  const QREncoder& qrEncoder;
  QRReader& qrReader;
};

}  // namespace quillmar
