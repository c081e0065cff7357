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

// A machine of its own for one application: every port, in memory and virtual time.
struct FakePlatform {
  explicit FakePlatform(Date start = VirtualDispatch::defaultStart) : dispatch(start) {}
  FakePlatform(const FakePlatform&) = delete;
  FakePlatform& operator=(const FakePlatform&) = delete;
  // What was still to run may hold on to the others, so it goes first.
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
  // The same machine on another session, such as one with a real network.
  Platform portsWith(HttpSession& session) { return portsWith(session, tunnel); }
  // ... and with another tunnel service.
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
