#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tunnel/network/server_lookup.h"
#include "tunnel/service/vpn_plugin.h"

namespace quillmar::tunnel {

// A connection of NetworkManager that this program is for.
struct Profile {
  std::string path;  // on the bus
  std::string uuid;
  bool isEnabled = false;
  std::optional<std::string> endpoint{};
};

// Nothing for what is for another program, or not of the shape that it should have.
std::optional<Profile> profileFrom(const ConnectionSettings& settings);

// What this program asks NetworkManager for, and hears of it. On the bus's thread. What NetworkManager does
// not answer is empty.
class NetworkManager {
 public:
  struct Events {
    std::function<void()> came;
    std::function<void()> went;
    // Something that decides whether a profile can be activated.
    std::function<void()> changed;
    std::function<void(const Profile&)> profileUpdated;
  };

  NetworkManager(sdbus::IConnection& bus, Events events);

  // Looks whether it is there already.
  void begin();

  bool isThere() const { return !owner_.empty(); }
  // It has read its connections.
  bool hasStarted();
  // Whether a link leads out, which a VPN needs.
  bool isOnline();
  // Nothing where it does not say.
  std::optional<std::vector<Profile>> profiles();
  // The problem, if there is one.
  std::string activate(const Profile& profile);
  // Those of the link below.
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
