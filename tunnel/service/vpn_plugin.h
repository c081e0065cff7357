#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace quillmar::tunnel {

inline constexpr const char* serviceName = "live.quillmar.quillmar.PacketTunnel";

using BusValues = std::map<std::string, sdbus::Variant>;
// A NetworkManager connection: values by key, by section.
using ConnectionSettings = std::map<std::string, BusValues>;

// The D-Bus interface that NetworkManager calls to connect a VPN.
class VpnPlugin {
 public:
  enum class State : std::uint32_t { initial = 1, starting = 3, started = 4, stopped = 6 };

  struct Events {
    // Throws a `refusal` if it fails.
    std::function<void(const ConnectionSettings&)> connect;
    std::function<void()> disconnect;
  };

  VpnPlugin(sdbus::IConnection& bus, Events events);

  // An error whose text NetworkManager shows.
  static sdbus::Error refusal(const std::string& problem);

  State state() const { return state_; }
  void announce(State state);
  // Sends no signal: NetworkManager would apply one that follows a disconnection to the next connection.
  void stopSilently() { state_ = State::stopped; }
  void announceConfiguration(bool hasIp6);
  void announceFailure();

 private:
  const std::unique_ptr<sdbus::IObject> object_;
  const Events events_;
  State state_ = State::initial;
};

}  // namespace quillmar::tunnel
