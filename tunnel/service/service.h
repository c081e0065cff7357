#pragma once

#include <sys/types.h>

#include <boost/asio/io_context.hpp>
#include <functional>
#include <optional>
#include <string>

#include "tunnel/link/ruleset_watch.h"
#include "tunnel/link/tun_device.h"
#include "tunnel/service/bus.h"
#include "tunnel/service/network_manager.h"
#include "tunnel/service/vpn_plugin.h"

namespace quillmar::tunnel {

// The privileged part: the device, the kernel's rules and NetworkManager. It reads nothing from the network.
// The worker answers queries; this tells it the endpoint.
class Service {
 public:
  using Tell = std::function<void(const std::string&)>;
  // Called with the endpoint's URL as configured; empty for none.
  using Take = std::function<void(const std::string&)>;
  struct Machine {
    bool hasIp6 = false;
    uid_t passes = 0;  // the user whose DNS is not redirected
  };

  // Throws sdbus::Error if there is no bus, or if another process owns the name.
  Service(boost::asio::io_context& context, Machine machine, Take take, Tell tell);

  // Runs until the context is stopped. Throws sdbus::Error when the bus disconnects.
  void run();
  // Removes the redirection and the device.
  void end();

  // The name servers of the link that the tunnel uses. If they are unknown now, the last known ones.
  NameServers nameServers();

 private:
  void connect(const ConnectionSettings& settings);
  void disconnect();
  // Returns the problem, or an empty text.
  std::string protect();
  void ask(const std::string& endpoint, const std::string& authority);
  void lift();
  void rulesetChanged(RulesetChange change);
  void managerCame();
  void activateWherePossible();
  void profileUpdated(const Profile& profile);

  boost::asio::io_context& context_;
  const Machine machine_;
  const Take take_;
  const Tell tell_;
  Bus bus_;
  VpnPlugin plugin_;
  NetworkManager manager_;
  RulesetWatch rules_;

  std::optional<TunDevice> device_;  // while protection is on
  std::string endpoint_;             // the URL as configured
  std::string profile_;              // its UUID
  bool shallActivate_ = false;
  NameServers lastServers_;
};

}  // namespace quillmar::tunnel
