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

// What has rights: the device, the rules, NetworkManager. It reads nothing from outside of this machine; who
// answers questions is told the endpoint.
class Service {
 public:
  using Tell = std::function<void(const std::string&)>;
  // The endpoint as it was written; no text is none.
  using Take = std::function<void(const std::string&)>;
  struct Machine {
    bool hasIp6 = false;
    uid_t passes = 0;  // the user whose own DNS the rules let out
  };

  // Throws sdbus::Error where there is no bus, or the name is another's.
  Service(boost::asio::io_context& context, Machine machine, Take take, Tell tell);

  // Until the context is stopped. Throws sdbus::Error once the bus is gone.
  void run();
  // Takes everything away.
  void end();

  // Those of the link below; where nobody knows them now, those that were last.
  NameServers nameServers();

 private:
  void connect(const ConnectionSettings& settings);
  void disconnect();
  // The problem, if there is one.
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
  std::string endpoint_;             // as it was written
  std::string profile_;              // by its UUID
  bool shallActivate_ = false;
  NameServers lastServers_;
};

}  // namespace quillmar::tunnel
