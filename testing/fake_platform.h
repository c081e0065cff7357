#pragma once

#include "platform/common/qrencode_encoder.h"
#include "platform/platform.h"
#include "platform/simulated/simulated_tunnel.h"
#include "testing/fake_biometrics.h"
#include "testing/fake_clipboard.h"
#include "testing/fake_device_info.h"
#include "testing/fake_haptics.h"
#include "testing/fake_qr_reader.h"
#include "testing/fake_window_style.h"
#include "testing/memory_secure_items.h"
#include "testing/memory_settings_store.h"
#include "testing/recording_log.h"
#include "testing/scripted_http_session.h"
#include "testing/virtual_dispatch.h"

namespace quillmar {

// All ports for one application, in memory and virtual time.
struct FakePlatform {
  explicit FakePlatform(Date start = VirtualDispatch::defaultStart) : dispatch(start) {}
  FakePlatform(const FakePlatform&) = delete;
  FakePlatform& operator=(const FakePlatform&) = delete;
  // Pending tasks may refer to the other members, so they are dropped first.
  ~FakePlatform() { dispatch.close(); }

  VirtualDispatch dispatch;
  MemorySettingsStore settings;
  RecordingLog log;
  ScriptedHttpSession http{dispatch};
  SimulatedTunnel tunnel{dispatch};
  MemorySecureItems secureItems;
  FakeBiometrics biometrics{dispatch};
  FakeDeviceInfo deviceInfo;
  FakeClipboard clipboard;
  FakeHaptics haptics;
  FakeWindowStyle windowStyle;
  QrencodeEncoder qrEncoder;
  FakeQRReader qrReader{dispatch};

  Platform ports() { return portsWith(http); }
  // The same ports with another session, for example a real one.
  Platform portsWith(HttpSession& session) { return portsWith(session, tunnel); }
  // The same with another tunnel service too.
  Platform portsWith(HttpSession& session, TunnelService& tunnels) {
    return {.settings = settings,
            .http = session,
            .dispatch = dispatch,
            .log = log,
            .tunnel = tunnels,
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
