#include "platform/linux/networkmanager_profile.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "foundation/url.h"

namespace quillmar {
namespace {

using Section = NetworkManagerSettings::mapped_type;
using Data = std::map<std::string, std::string>;

constexpr const char* vpnType = "vpn";

// NetworkManager omits values that are the default.
template <class T>
T valueOr(const Section& section, const std::string& key, T standard) {
  const auto found = section.find(key);
  return found == section.end() ? std::move(standard) : found->second.get<T>();
}

Section sectionOf(const NetworkManagerSettings& settings, const std::string& name) {
  const auto found = settings.find(name);
  return found == settings.end() ? Section() : found->second;
}

// Makes NetworkManager send all DNS queries to the tunnel's server, but no other traffic to the tunnel. Other
// settings of the user stay.
void claimNames(Section& family) {
  constexpr std::int32_t beforeAllOthers = -100;
  const std::string allNames = "~.";
  family.try_emplace("method", std::string("auto"));
  family["never-default"] = true;
  family["dns-priority"] = std::min(valueOr(family, "dns-priority", std::int32_t{0}), beforeAllOthers);
  auto domains = valueOr(family, "dns-search", std::vector<std::string>());
  if (std::ranges::find(domains, allNames) == domains.end()) {
    domains.push_back(allNames);
  }
  family["dns-search"] = domains;
}

std::string serverAddress(const Data& data) {
  for (const auto& [key, value] : data) {
    if (const auto url = URL::parse(value); url && url->host()) {
      return *url->host();
    }
  }
  return {};
}

}  // namespace

NetworkManagerProfile profileOf(const TunnelConfiguration& configuration, const TunnelProtocol& protocol,
                                const std::string& uuid) {
  return {.uuid = uuid,
          .protocol = protocol,
          .name = configuration.localizedDescription,
          .enabled = configuration.isEnabled,
          .onDemand = configuration.isOnDemandEnabled && !configuration.onDemandRules.empty()};
}

void assign(TunnelConfiguration& configuration, const NetworkManagerProfile& profile) {
  configuration.protocolConfiguration = profile.protocol;
  configuration.localizedDescription = profile.name;
  configuration.isEnabled = profile.enabled;
  configuration.isOnDemandEnabled = profile.onDemand;
  configuration.onDemandRules.assign(profile.onDemand ? 1 : 0, {InterfaceType::any});
}

std::optional<NetworkManagerProfile> profileFrom(const NetworkManagerSettings& settings,
                                                 const std::string& serviceType) {
  const Section connection = sectionOf(settings, "connection");
  const Section vpn = sectionOf(settings, "vpn");
  if (valueOr<std::string>(connection, "type", {}) != vpnType ||
      valueOr<std::string>(vpn, "service-type", {}) != serviceType) {
    return std::nullopt;
  }
  auto data = valueOr<Data>(vpn, "data", {});
  auto address = serverAddress(data);
  return NetworkManagerProfile{.uuid = valueOr<std::string>(connection, "uuid", {}),
                               .protocol = {serviceType, std::move(address), std::move(data)},
                               .name = valueOr<std::string>(connection, "id", {}),
                               .enabled = valueOr(connection, "autoconnect", true),
                               .onDemand = valueOr(vpn, "persistent", false)};
}

void write(const NetworkManagerProfile& profile, NetworkManagerSettings& settings) {
  Section& connection = settings["connection"];
  connection["type"] = std::string(vpnType);
  connection["uuid"] = profile.uuid;
  connection["id"] = profile.name;
  connection["autoconnect"] = profile.enabled;
  settings["vpn"] = {{"service-type", profile.protocol.providerBundleIdentifier},
                     {"data", profile.protocol.providerConfiguration},
                     {"persistent", profile.onDemand}};
  claimNames(settings["ipv4"]);
  claimNames(settings["ipv6"]);
}

}  // namespace quillmar
