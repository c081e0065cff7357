#include "platform/simulated/tunnel_text.h"

#include <cstdint>
#include <utility>

#include "foundation/json.h"
#include "foundation/json_decode.h"

namespace quillmar {
namespace {

struct EntryText {
  std::string key;
  std::string value;
};

struct ProtocolText {
  std::string providerBundleIdentifier;
  std::string serverAddress;
  std::vector<EntryText> providerConfiguration;
};

struct ConfigurationText {
  std::optional<ProtocolText> protocolConfiguration;
  std::string localizedDescription;
  bool isEnabled = false;
  std::vector<std::int64_t> onDemandInterfaceTypes;
  bool isOnDemandEnabled = false;
};

struct TunnelsText {
  std::vector<ConfigurationText> configurations;
};

ConfigurationText textOf(const SavedTunnel& saved) {
  ConfigurationText text{.protocolConfiguration = std::nullopt,
                         .localizedDescription = saved.localizedDescription,
                         .isEnabled = saved.isEnabled,
                         .onDemandInterfaceTypes = {},
                         .isOnDemandEnabled = saved.isOnDemandEnabled};
  if (const auto& protocol = saved.protocolConfiguration) {
    auto& written = text.protocolConfiguration.emplace(
        ProtocolText{protocol->providerBundleIdentifier, protocol->serverAddress, {}});
    for (const auto& [key, value] : protocol->providerConfiguration) {
      written.providerConfiguration.push_back({key, value});
    }
  }
  for (const OnDemandRuleConnect& rule : saved.onDemandRules) {
    text.onDemandInterfaceTypes.push_back(static_cast<std::int64_t>(rule.interfaceTypeMatch));
  }
  return text;
}

SavedTunnel savedFrom(const ConfigurationText& text) {
  SavedTunnel saved{.protocolConfiguration = std::nullopt,
                    .localizedDescription = text.localizedDescription,
                    .isEnabled = text.isEnabled,
                    .onDemandRules = {},
                    .isOnDemandEnabled = text.isOnDemandEnabled};
  if (const auto& protocol = text.protocolConfiguration) {
    auto& read = saved.protocolConfiguration.emplace(
        TunnelProtocol{protocol->providerBundleIdentifier, protocol->serverAddress, {}});
    for (const auto& [key, value] : protocol->providerConfiguration) {
      read.providerConfiguration.emplace(key, value);
    }
  }
  for (const std::int64_t type : text.onDemandInterfaceTypes) {
    saved.onDemandRules.push_back({static_cast<InterfaceType>(type)});
  }
  return saved;
}

}  // namespace

template <>
inline constexpr auto wire<EntryText> = record(required("key", &EntryText::key),
                                               required("value", &EntryText::value));

template <>
inline constexpr auto wire<ProtocolText> =
    record(required("providerBundleIdentifier", &ProtocolText::providerBundleIdentifier),
           required("serverAddress", &ProtocolText::serverAddress),
           required("providerConfiguration", &ProtocolText::providerConfiguration));

template <>
inline constexpr auto wire<ConfigurationText> =
    record(optional("protocolConfiguration", &ConfigurationText::protocolConfiguration),
           required("localizedDescription", &ConfigurationText::localizedDescription),
           required("isEnabled", &ConfigurationText::isEnabled),
           required("onDemandInterfaceTypes", &ConfigurationText::onDemandInterfaceTypes),
           required("isOnDemandEnabled", &ConfigurationText::isOnDemandEnabled));

template <>
inline constexpr auto wire<TunnelsText> = record(required("configurations", &TunnelsText::configurations));

std::string tunnelText(const std::vector<SavedTunnel>& saved) {
  TunnelsText text;
  for (const SavedTunnel& each : saved) {
    text.configurations.push_back(textOf(each));
  }
  const auto written = encodeJson(text);
  return written ? written.value() : std::string();
}

std::vector<SavedTunnel> savedTunnels(std::string_view text) {
  std::vector<SavedTunnel> saved;
  if (const auto read = decodeJson<TunnelsText>(text)) {
    for (const ConfigurationText& each : read.value().configurations) {
      saved.push_back(savedFrom(each));
    }
  }
  return saved;
}

}  // namespace quillmar
