#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <map>
#include <optional>
#include <string>

#include "platform/tunnel.h"

namespace quillmar {

// A connection of NetworkManager as its D-Bus interface carries it: values by key by setting.
using NetworkManagerSettings = std::map<std::string, std::map<std::string, sdbus::Variant>>;

// The properties of a tunnel configuration, and what NetworkManager keeps them as:
// - the name of the connection is the localized description,
// - the type of the VPN service is the provider's bundle identifier, its data the provider's configuration,
// - "connect automatically" is whether the configuration is enabled: NetworkManager gives it no meaning for a
//   VPN, and every tool shows it and lets a person change it,
// - a persistent VPN is on demand on any interface, the one rule that NetworkManager can keep.
// Beside them stands that the tunnel is asked for all names, and carries nothing else.
// There is no place for the server's address, which is for display: read back, it is the host of the first
// URL among the data.
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

// Nothing where the connection is no VPN of this service type. Throws sdbus::Error where it is one but of
// unexpected shape.
std::optional<NetworkManagerProfile> profileFrom(const NetworkManagerSettings& settings,
                                                 const std::string& serviceType);
// Leaves all else in the settings as it is; a connection that an earlier version wrote is brought up to this
// one.
void write(const NetworkManagerProfile& profile, NetworkManagerSettings& settings);

}  // namespace quillmar
