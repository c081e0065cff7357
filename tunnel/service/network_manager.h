#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tunnel/network/server_lookup.h"
#include "tunnel/service/vpn_plugin.h"

namespace quillmar::tunnel {

// A NetworkManager connection of this program's service type.
struct Profile {
  std::string path;  // on D-Bus
  std::string uuid;
  bool isEnabled = false;
  std::optional<std::string> endpoint{};
};

// nullopt if the connection is of another type or malformed.
std::optional<Profile> profileFrom(const ConnectionSettings& settings);

// The calls to NetworkManager and its signals. Used on the bus's thread. If NetworkManager does not answer,
// results are empty.
class NetworkManager {
 public:
  struct Events {
    std::function<void()> came;
    std::function<void()> went;
    // A change after which a profile may be activated.
    std::function<void()> changed;
    std::function<void(const Profile&)> profileUpdated;
  };

  NetworkManager(sdbus::IConnection& bus, Events events);

  // Reports NetworkManager if it is running already.
  void begin();

  bool isThere() const { return !owner_.empty(); }
  // Whether it has read its connections.
  bool hasStarted();
  // Whether there is a link to the outside, which a VPN needs.
  bool isOnline();
  // nullopt if it does not answer.
  std::optional<std::vector<Profile>> profiles();
  // Returns the problem, or an empty text.
  std::string activate(const Profile& profile);
  // The name servers of the link that the VPN uses.
  NameServers nameServers();

 private:
  void watch(const std::string& rule, std::function<void(sdbus::Message&)> heard);
  void ownerChanged(const std::string& owner);
  std::optional<Profile> profileAt(const std::string& path);
  template <class T>
  T property(const std::string& path, const std::string& interface, const std::string& name,
             T otherwise = T());

  sdbus::IConnection& bus_;
  const Events events_;
  std::string owner_;
  std::vector<sdbus::Slot> matches_;
};

}  // namespace quillmar::tunnel
