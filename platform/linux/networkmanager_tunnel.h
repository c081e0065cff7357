#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/dispatch.h"
#include "platform/tunnel.h"

namespace quillmar {

// Tunnel configurations as VPN connections of NetworkManager. Sees and touches only the connections whose
// service type is its bundle identifier; `networkmanager_profile.h` tells where each property is kept.
//
// The status is that of the connection's activation: `invalid` while NetworkManager has no such connection,
// `disconnected` while it is not active or NetworkManager does not run, `reasserting` while an activation
// that was up comes up again. One announcement for one change. Errors carry NetworkManager's own words.
//
// A start is answered within `startPatience`: an error if NetworkManager refused by then, success otherwise.
// A tunnel that is up or coming up is left alone, unless a save has given it another protocol since it
// started: then it is restarted, as NetworkManager would go on with what it was started with.
//
// What NetworkManager is asked through may go away and come back at any time (the bus, NetworkManager, the
// connection): calls fail meanwhile, and the next one after its return succeeds. Completions come on the
// main thread, never inside the call. Destroying it drops those that are still due.
class NetworkManagerTunnel final : public TunnelService {
 public:
  struct Options {
    // The system's bus by default, whatever the environment says: what answers there is trusted.
    std::string busAddress = "unix:path=/run/dbus/system_bus_socket";
    // For each answer of NetworkManager ...
    std::chrono::milliseconds patience{5000};
    // ... that needs no permission first, which a person may be asked for.
    std::chrono::milliseconds promptPatience{std::chrono::minutes(5)};
    std::chrono::milliseconds startPatience{250};
  };

  NetworkManagerTunnel(Dispatch& dispatch, std::string bundleIdentifier);
  NetworkManagerTunnel(Dispatch& dispatch, std::string bundleIdentifier, const Options& options);
  ~NetworkManagerTunnel() override;

  void loadAll(ListCompletion completion) override;
  std::shared_ptr<TunnelConfiguration> makeConfiguration() override;
  Subscription observeStatus(std::function<void(TunnelConnection&)> observer) override;

 private:
  class Connection;
  class Configuration;
  struct State;

  const std::shared_ptr<State> state_;
};

}  // namespace quillmar
