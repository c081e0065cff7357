#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <map>
#include <optional>
#include <string>

#include "platform/tunnel.h"

namespace quillmar {

// A connection of NetworkManager as on D-Bus: values by key, by setting.
using NetworkManagerSettings = std::map<std::string, std::map<std::string, sdbus::Variant>>;

// The properties of a tunnel configuration, and how NetworkManager stores them:
// - The connection's name is the localized description.
// - The VPN's service type is the provider's bundle identifier. The VPN's data are the provider's
// configuration.
// - "Connect automatically" says whether the configuration is enabled. It has no effect on a VPN in
// NetworkManager, and
//   every tool shows it and can change it.
// - A persistent VPN is on demand on any interface, the only rule that NetworkManager can store.
// The connection also says that all DNS queries, and no other traffic, go to the tunnel.
// The server's address, which is only displayed, is not stored. It is read as the host of the first URL among
// the data.
struct NetworkManagerProfile {
  std::string uuid;
  TunnelProtocol protocol;
  std::string name;
  bool enabled = false;
  bool onDemand = false;
  friend bool operator==(const NetworkManagerProfile&, const NetworkManagerProfile&) = default;
};

NetworkManagerProfile profileOf(const TunnelConfiguration& configuration, const TunnelProtocol& protocol,
                                const std::string& uuid);
void assign(TunnelConfiguration& configuration, const NetworkManagerProfile& profile);

// nullopt if the connection is not a VPN of this service type. Throws sdbus::Error if it is one but a value
// has an unexpected type.
std::optional<NetworkManagerProfile> profileFrom(const NetworkManagerSettings& settings,
                                                 const std::string& serviceType);
// Keeps all other settings. A connection written by an earlier version gets the current form.
void write(const NetworkManagerProfile& profile, NetworkManagerSettings& settings);

}  // namespace quillmar
