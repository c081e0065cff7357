#include "tunnel/service/vpn_plugin.h"

#include <arpa/inet.h>

#include <array>
#include <utility>
#include <vector>

#include "tunnel/link/constants.h"

namespace quillmar::tunnel {
namespace {

constexpr const char* objectPath = "/org/freedesktop/NetworkManager/VPN/Plugin";
constexpr const char* pluginInterface = "org.freedesktop.NetworkManager.VPN.Plugin";

// NetworkManager requires a gateway. It adds routes to an ordinary address on the link, which stay when the
// cable is unplugged. It adds none to a multicast address.
constexpr const char* gateway = "224.0.0.1";

constexpr std::uint32_t connectFailed = 1;

// In network byte order.
std::uint32_t address4(const char* text) {
  in_addr address{};
  inet_pton(AF_INET, text, &address);
  return address.s_addr;
}

std::vector<std::uint8_t> address6(const char* text) {
  std::vector<std::uint8_t> address(sizeof(in6_addr));
  inet_pton(AF_INET6, text, address.data());
  return address;
}

}  // namespace

VpnPlugin::VpnPlugin(sdbus::IConnection& bus, Events events)
    : object_(sdbus::createObject(bus, objectPath)), events_(std::move(events)) {
  object_->registerMethod("Connect")
      .onInterface(pluginInterface)
      .implementedAs([this](const ConnectionSettings& settings) { events_.connect(settings); });
  object_->registerMethod("ConnectInteractive")
      .onInterface(pluginInterface)
      .implementedAs(
          [this](const ConnectionSettings& settings, const BusValues&) { events_.connect(settings); });
  object_->registerMethod("NeedSecrets")
      .onInterface(pluginInterface)
      .implementedAs([](const ConnectionSettings&) { return std::string(); });
  object_->registerMethod("NewSecrets")
      .onInterface(pluginInterface)
      .implementedAs([](const ConnectionSettings&) {});
  object_->registerMethod("Disconnect").onInterface(pluginInterface).implementedAs([this] {
    events_.disconnect();
  });
  object_->registerMethod("SetConfig").onInterface(pluginInterface).implementedAs([](const BusValues&) {});
  object_->registerMethod("SetIp4Config").onInterface(pluginInterface).implementedAs([](const BusValues&) {});
  object_->registerMethod("SetFailure").onInterface(pluginInterface).implementedAs([](const std::string&) {});
  object_->registerProperty("State").onInterface(pluginInterface).withGetter([this] {
    return static_cast<std::uint32_t>(state_);
  });
  for (const char* signal : {"StateChanged", "Failure"}) {
    object_->registerSignal(signal).onInterface(pluginInterface).withParameters<std::uint32_t>();
  }
  for (const char* signal : {"Config", "Ip4Config", "Ip6Config"}) {
    object_->registerSignal(signal).onInterface(pluginInterface).withParameters<BusValues>();
  }
  object_->finishRegistration();
}

sdbus::Error VpnPlugin::refusal(const std::string& problem) {
  return {"org.freedesktop.NetworkManager.VPN.Error.LaunchFailed", problem};
}

void VpnPlugin::announce(State state) {
  state_ = state;
  object_->emitSignal("StateChanged")
      .onInterface(pluginInterface)
      .withArguments(static_cast<std::uint32_t>(state));
}

void VpnPlugin::announceConfiguration(bool hasIp6) {
  const auto announceValues = [this](const char* signal, const BusValues& values) {
    object_->emitSignal(signal).onInterface(pluginInterface).withArguments(values);
  };
  announceValues("Config", {{"tundev", std::string(deviceName)},
                            {"gateway", address4(gateway)},
                            {"has-ip4", true},
                            {"has-ip6", hasIp6},
                            {"can-persist", true}});
  announceValues("Ip4Config", {{"address", address4(tunnelAddress4)},
                               {"prefix", std::uint32_t{32}},
                               {"never-default", true},
                               {"dns", std::vector{address4(tunnelAddress4)}},
                               {"domains", std::vector<std::string>{"~."}}});
  // Without a name server, since with two of them each failure would take twice as long.
  if (hasIp6) {
    announceValues(
        "Ip6Config",
        {{"address", address6(tunnelAddress6)}, {"prefix", std::uint32_t{128}}, {"never-default", true}});
  }
}

void VpnPlugin::announceFailure() {
  object_->emitSignal("Failure").onInterface(pluginInterface).withArguments(connectFailed);
  announce(State::stopped);
}

}  // namespace quillmar::tunnel
