#include "tunnel/service/network_manager.h"

#include <net/if.h>

#include <algorithm>
#include <array>
#include <boost/asio/ip/address.hpp>
#include <cstdint>
#include <utility>

namespace quillmar::tunnel {
namespace {

constexpr const char* networkManager = "org.freedesktop.NetworkManager";
constexpr const char* managerPath = "/org/freedesktop/NetworkManager";
constexpr const char* settingsPath = "/org/freedesktop/NetworkManager/Settings";
constexpr const char* settingsInterface = "org.freedesktop.NetworkManager.Settings";
constexpr const char* connectionInterface = "org.freedesktop.NetworkManager.Settings.Connection";
constexpr const char* activeInterface = "org.freedesktop.NetworkManager.Connection.Active";
constexpr const char* deviceInterface = "org.freedesktop.NetworkManager.Device";
constexpr const char* ip4Interface = "org.freedesktop.NetworkManager.IP4Config";
constexpr const char* ip6Interface = "org.freedesktop.NetworkManager.IP6Config";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* messageBus = "org.freedesktop.DBus";

constexpr const char* endpointKey = "dohEndpoint";
constexpr const char* nothing = "/";
constexpr std::uint16_t dnsPort = 53;

using Path = sdbus::ObjectPath;
namespace ip = boost::asio::ip;

// NetworkManager omits values that are the default.
template <class T>
T valueOr(const BusValues& values, const std::string& key, T standard) {
  const auto found = values.find(key);
  return found == values.end() ? std::move(standard) : found->second.get<T>();
}

BusValues sectionOf(const ConnectionSettings& settings, const std::string& name) {
  const auto found = settings.find(name);
  return found == settings.end() ? BusValues() : found->second;
}

ip::address addressFrom(const std::vector<std::uint8_t>& bytes, unsigned device) {
  ip::address_v6::bytes_type sixteen{};
  std::copy_n(bytes.begin(), std::min(bytes.size(), sixteen.size()), sixteen.begin());
  ip::address_v6 address(sixteen);
  if (address.is_link_local()) {
    address.scope_id(device);
  }
  return address;
}

}  // namespace

std::optional<Profile> profileFrom(const ConnectionSettings& settings) {
  try {
    const auto connection = sectionOf(settings, "connection");
    const auto vpn = sectionOf(settings, "vpn");
    if (valueOr<std::string>(vpn, "service-type", {}) != serviceName) {
      return std::nullopt;
    }
    const auto data = valueOr<std::map<std::string, std::string>>(vpn, "data", {});
    const auto endpoint = data.find(endpointKey);
    return Profile{.path = {},
                   .uuid = valueOr<std::string>(connection, "uuid", {}),
                   .isEnabled = valueOr(connection, "autoconnect", true),
                   .endpoint = endpoint == data.end() ? std::nullopt : std::optional(endpoint->second)};
  } catch (const sdbus::Error&) {
    return std::nullopt;
  }
}

NetworkManager::NetworkManager(sdbus::IConnection& bus, Events events)
    : bus_(bus), events_(std::move(events)) {}

// Any program can send this one a signal directly. A signal counts only if it comes from the owner of
// NetworkManager's name.
void NetworkManager::watch(const std::string& rule, std::function<void(sdbus::Message&)> heard) {
  matches_.push_back(bus_.addMatch("type='signal',sender='" + std::string(networkManager) + "'," + rule,
                                   [this, heard = std::move(heard)](sdbus::Message& message) {
                                     if (message.getSender() == owner_) {
                                       heard(message);
                                     }
                                   }));
}

void NetworkManager::begin() {
  matches_.push_back(bus_.addMatch("type='signal',sender='" + std::string(messageBus) + "',interface='" +
                                       messageBus + "',member='NameOwnerChanged',arg0='" + networkManager +
                                       "'",
                                   [this](sdbus::Message& message) {
                                     std::array<std::string, 3> nameBeforeAndOwner;
                                     auto& [name, before, owner] = nameBeforeAndOwner;
                                     message >> name >> before >> owner;
                                     if (message.getSender() == messageBus && name == networkManager) {
                                       ownerChanged(owner);
                                     }
                                   }));
  watch("path='" + std::string(managerPath) + "',interface='" + propertiesInterface +
            "',member='PropertiesChanged'",
        [this](sdbus::Message& message) {
          std::string interface;
          BusValues changed;
          message >> interface >> changed;
          if (changed.contains("PrimaryConnection") || changed.contains("Startup")) {
            events_.changed();
          }
        });
  watch("interface='" + std::string(settingsInterface) + "',member='NewConnection'",
        [this](sdbus::Message&) { events_.changed(); });
  watch("interface='" + std::string(connectionInterface) + "',member='Updated'",
        [this](sdbus::Message& message) {
          if (const auto profile = profileAt(message.getPath())) {
            events_.profileUpdated(*profile);
          }
        });
  try {
    std::string owner;
    sdbus::createProxy(bus_, messageBus, "/org/freedesktop/DBus")
        ->callMethod("GetNameOwner")
        .onInterface(messageBus)
        .withArguments(std::string(networkManager))
        .storeResultsTo(owner);
    ownerChanged(owner);
  } catch (const sdbus::Error&) {
    // It isn't running. A signal will report its start.
  }
}

void NetworkManager::ownerChanged(const std::string& owner) {
  if (std::exchange(owner_, owner) == owner) {
    return;
  }
  owner.empty() ? events_.went() : events_.came();
}

template <class T>
T NetworkManager::property(const std::string& path, const std::string& interface, const std::string& name,
                           T otherwise) {
  try {
    return sdbus::createProxy(bus_, networkManager, path)
        ->getProperty(name)
        .onInterface(interface)
        .template get<T>();
  } catch (const sdbus::Error&) {
    return otherwise;
  }
}

bool NetworkManager::hasStarted() {
  return isThere() && !property(managerPath, networkManager, "Startup", true);
}

bool NetworkManager::isOnline() {
  const auto primary = property<Path>(managerPath, networkManager, "PrimaryConnection");
  return !primary.empty() && primary != nothing;
}

std::optional<Profile> NetworkManager::profileAt(const std::string& path) {
  try {
    ConnectionSettings settings;
    sdbus::createProxy(bus_, networkManager, path)
        ->callMethod("GetSettings")
        .onInterface(connectionInterface)
        .storeResultsTo(settings);
    auto profile = profileFrom(settings);
    if (profile) {
      profile->path = path;
    }
    return profile;
  } catch (const sdbus::Error&) {
    return std::nullopt;
  }
}

std::optional<std::vector<Profile>> NetworkManager::profiles() {
  std::vector<Path> paths;
  try {
    sdbus::createProxy(bus_, networkManager, settingsPath)
        ->callMethod("ListConnections")
        .onInterface(settingsInterface)
        .storeResultsTo(paths);
  } catch (const sdbus::Error&) {
    return std::nullopt;
  }
  std::vector<Profile> profiles;
  for (const Path& path : paths) {
    if (auto profile = profileAt(path)) {
      profiles.push_back(std::move(*profile));
    }
  }
  return profiles;
}

std::string NetworkManager::activate(const Profile& profile) {
  try {
    const Path ofItsChoice(nothing);
    Path activation;
    sdbus::createProxy(bus_, networkManager, managerPath)
        ->callMethod("ActivateConnection")
        .onInterface(networkManager)
        .withArguments(Path(profile.path), ofItsChoice, ofItsChoice)
        .storeResultsTo(activation);
    return {};
  } catch (const sdbus::Error& error) {
    return error.getMessage().empty() ? error.getName() : error.getMessage();
  }
}

NameServers NetworkManager::nameServers() {
  NameServers servers;
  const auto primary = property<Path>(managerPath, networkManager, "PrimaryConnection");
  if (primary.empty() || primary == nothing) {
    return servers;
  }
  const auto devices = property<std::vector<Path>>(primary, activeInterface, "Devices");
  const auto name =
      devices.empty() ? std::string() : property<std::string>(devices.front(), deviceInterface, "Interface");
  const auto ip6 = property<Path>(primary, activeInterface, "Ip6Config");
  for (const auto& bytes :
       property<std::vector<std::vector<std::uint8_t>>>(ip6, ip6Interface, "Nameservers")) {
    servers.emplace_back(addressFrom(bytes, ::if_nametoindex(name.c_str())), dnsPort);
  }
  const auto ip4 = property<Path>(primary, activeInterface, "Ip4Config");
  for (const auto& data : property<std::vector<BusValues>>(ip4, ip4Interface, "NameserverData")) {
    boost::system::error_code error;
    const auto address = ip::make_address(valueOr<std::string>(data, "address", {}), error);
    if (!error) {
      servers.emplace_back(address, dnsPort);
    }
  }
  return servers;
}

}  // namespace quillmar::tunnel
