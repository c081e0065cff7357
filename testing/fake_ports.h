#pragma once

#include "platform/common/qrencode_encoder.h"
#include "platform/platform.h"
#include "testing/fake_biometrics.h"
#include "testing/fake_clipboard.h"
#include "testing/fake_device_info.h"
#include "testing/fake_haptics.h"
#include "testing/fake_qr_reader.h"
#include "testing/fake_window_style.h"
#include "testing/memory_secure_items.h"

namespace quillmar {

// The ports that every simulated machine fakes alike.
struct FakePorts {
  explicit FakePorts(Dispatch& dispatch) : biometrics(dispatch), qrReader(dispatch) {}

  MemorySecureItems secureItems;
  FakeBiometrics biometrics;
  FakeDeviceInfo deviceInfo;
  FakeClipboard clipboard;
  FakeHaptics haptics;
  FakeWindowStyle windowStyle;
  QrencodeEncoder qrEncoder;
  FakeQRReader qrReader;

  // The others, which differ from machine to machine.
  struct Others {
    SettingsStore& settings;
    HttpSession& http;
    Dispatch& dispatch;
    Log& log;
    TunnelService& tunnel;
  };
  Platform with(const Others& others) {
    return {.settings = others.settings,
            .http = others.http,
            .dispatch = others.dispatch,
            .log = others.log,
            .tunnel = others.tunnel,
            .secureItems = secureItems,
            .biometrics = biometrics,
            .deviceInfo = deviceInfo,
            .clipboard = clipboard,
            .haptics = haptics,
            .windowStyle = windowStyle,
            .qrEncoder = qrEncoder,
            .qrReader = qrReader};
  }
};

}  // namespace quillmar
