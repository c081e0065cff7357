#pragma once

#include "platform/platform.h"
#include "platform/simulated/simulated_tunnel.h"
#include "testing/fake_ports.h"
#include "testing/memory_settings_store.h"
#include "testing/recording_log.h"
#include "testing/scripted_http_session.h"
#include "testing/virtual_dispatch.h"

namespace quillmar {

struct VirtualTime {
  explicit VirtualTime(Date start) : dispatch(start) {}
  VirtualDispatch dispatch;
};

// All ports for one application, in memory and virtual time. VirtualTime is a base class, because FakePorts
// uses it.
struct FakePlatform : VirtualTime, FakePorts {
  explicit FakePlatform(Date start = VirtualDispatch::defaultStart)
      : VirtualTime(start), FakePorts(dispatch) {}
  FakePlatform(const FakePlatform&) = delete;
  FakePlatform& operator=(const FakePlatform&) = delete;
  // Pending tasks may refer to the other members, so they are dropped first.
  ~FakePlatform() { dispatch.close(); }

  MemorySettingsStore settings;
  RecordingLog log;
  ScriptedHttpSession http{dispatch};
  SimulatedTunnel tunnel{dispatch};

  Platform ports() { return portsWith(http); }
  // The same ports with another session, for example a real one.
  Platform portsWith(HttpSession& session) { return portsWith(session, tunnel); }
  // The same with another tunnel service too.
  Platform portsWith(HttpSession& session, TunnelService& tunnels) {
    return with({.settings = settings, .http = session, .dispatch = dispatch, .log = log, .tunnel = tunnels});
  }
};

}  // namespace quillmar
