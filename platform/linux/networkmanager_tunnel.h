#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/dispatch.h"
#include "platform/linux/bus_names.h"
#include "platform/tunnel.h"

namespace quillmar {

// Tunnel configurations as VPN connections of NetworkManager, limited to those whose service type is the
// bundle identifier. `networkmanager_profile.h` says where each property is stored.
//
// The status is that of the connection's activation: `invalid` if NetworkManager has no such connection,
// `disconnected` if it is not active or NetworkManager is not running, `reasserting` if an activation that
// was up is coming up again. Each change is announced once. Error texts are NetworkManager's.
//
// `start` completes within `startTimeout`: with an error if NetworkManager refused by then, else with
// success. A tunnel that is up or coming up is left alone. The tunnel program watches its saved connection
// and takes over a changed endpoint without a gap; one that doesn't watch uses it from its next start on.
//
// The bus, NetworkManager and the connection may disappear and return at any time. Calls fail meanwhile; the
// next one after the return succeeds. Completions come on the main thread, never inside the call; the
// destructor drops pending ones.
class NetworkManagerTunnel final : public TunnelService {
 public:
  struct Options {
    // Always the system bus, whatever the environment says, because its answers are trusted.
    std::string busAddress = systemBusAddress;
    // For a reply of NetworkManager that needs no authorization.
    std::chrono::milliseconds timeout{5000};
    // For a reply that may wait for the user's authorization.
    std::chrono::milliseconds promptTimeout{std::chrono::minutes(5)};
    std::chrono::milliseconds startTimeout{250};
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
