#include "platform/linux/networkmanager_client.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/linux/bus_names.h"

namespace quillmar {
namespace {

constexpr const char* settingsPath = "/org/freedesktop/NetworkManager/Settings";
constexpr const char* settingsInterface = "org.freedesktop.NetworkManager.Settings";
constexpr const char* connectionInterface = "org.freedesktop.NetworkManager.Settings.Connection";
constexpr const char* activeInterface = "org.freedesktop.NetworkManager.Connection.Active";
constexpr const char* objectManagerInterface = "org.freedesktop.DBus.ObjectManager";
constexpr const char* objectsPath = "/org/freedesktop";

constexpr std::uint32_t keptOnDisk = 1;

// NM_ACTIVE_CONNECTION_STATE.
enum ActiveState : std::uint32_t {
  unknown = 0,
  activating = 1,
  activated = 2,
  deactivating = 3,
  deactivated = 4
};

constexpr auto statusOfActiveState =
    std::to_array<TunnelStatus>({TunnelStatus::connecting, TunnelStatus::connecting, TunnelStatus::connected,
                                 TunnelStatus::disconnecting, TunnelStatus::disconnected});

bool isNamed(const sdbus::Error& error, std::initializer_list<std::string_view> names) {
  return std::ranges::find(names, error.getName()) != names.end();
}

bool saysNotThere(const sdbus::Error& error) {
  return isNamed(error,
                 {"org.freedesktop.NetworkManager.Settings.InvalidConnection",
                  "org.freedesktop.DBus.Error.UnknownMethod", "org.freedesktop.DBus.Error.UnknownObject"});
}

bool saysNotOurs(const sdbus::Error& error) {
  return isNamed(error, {"org.freedesktop.NetworkManager.Settings.PermissionDenied",
                         "org.freedesktop.DBus.Error.AccessDenied"});
}

Error errorFrom(const sdbus::Error& error) {
  if (isNamed(error,
              {"org.freedesktop.DBus.Error.ServiceUnknown", "org.freedesktop.DBus.Error.NameHasNoOwner"})) {
    return TunnelError{"NetworkManager is not running."};
  }
  if (isNamed(error, {"org.freedesktop.DBus.Error.Timeout", "org.freedesktop.DBus.Error.NoReply",
                      "System.Error.ETIMEDOUT"})) {
    return TunnelError{"NetworkManager does not answer."};
  }
  return TunnelError{messageOf(error)};
}

sdbus::Error refusal(const std::string& sentence) { return {"live.quillmar.Error.Refused", sentence}; }

template <class T>
auto failing(std::function<void(Result<T>)> reply) {
  return [reply = std::move(reply)](const sdbus::Error& error) { reply(errorFrom(error)); };
}

}  // namespace

NetworkManagerClient::NetworkManagerClient(Options options, StatusChanged statusChanged)
    : options_(std::move(options)),
      statusChanged_(std::move(statusChanged)),
      thread_(options_.busAddress, options_.timeout, *this) {}

NetworkManagerClient::~NetworkManagerClient() = default;

template <class T>
void NetworkManagerClient::post(std::function<void()> work, Reply<T> reply) {
  auto failed = failing<T>(std::move(reply));
  thread_.post(
      [this, work = std::move(work), failed](sdbus::IConnection&) {
        if (isReadingActivations_) {
          deferred_.push_back({work, failed});
        } else {
          work();
        }
      },
      failed);
}

void NetworkManagerClient::list(const Reply<std::vector<Listed>>& reply) {
  post(
      [this, reply] {
        std::vector<Listed> listed;
        for (auto& profile : readProfiles()) {
          const auto status = statusOf(profile.uuid);
          listed.push_back({std::move(profile), status});
        }
        reply(std::move(listed));
      },
      reply);
}

void NetworkManagerClient::fetch(std::string uuid, const Reply<NetworkManagerProfile>& reply) {
  post(
      [this, uuid = std::move(uuid), reply] {
        const auto path = pathOf(uuid);
        if (!path) {
          throw refusal("NetworkManager no longer has the connection.");
        }
        reply(profileAt(*path));
      },
      reply);
}

void NetworkManagerClient::save(NetworkManagerProfile profile, const Reply<void>& reply) {
  post([this, profile = std::move(profile), reply] { saveNow(profile, reply); }, reply);
}

void NetworkManagerClient::start(std::string uuid, const Reply<void>& reply) {
  post([this, uuid = std::move(uuid), reply] { startNow(uuid, reply); }, reply);
}

void NetworkManagerClient::joined(sdbus::IConnection& bus) {
  bus_ = &bus;
  calls_.joined(bus);
  signals_.joined(bus);
  watchSignals();
  // If it does not run, its start will be announced, and callers get errors until then.
  ownerChanged(signals_.ownerOf(networkManager));
}

void NetworkManagerClient::left() {
  ownerChanged({});
  calls_.left();
  for (const auto& deferred : std::exchange(deferred_, {})) {
    deferred.failed(busWentAway());
  }
  isReadingActivations_ = false;
  willReadProfiles_ = false;
  signals_.left();
  bus_ = nullptr;
}

// Anyone can send this program a signal, so it counts only from the owner of the service's name.
void NetworkManagerClient::watchSignals() {
  const auto fromService = [this](auto handle) {
    return [this, handle](sdbus::Message& message) {
      if (message.getSender() == owner_) {
        handle(message);
      }
    };
  };
  const std::string fromIt = "sender='" + std::string(networkManager) + "',";
  const std::string activations = "arg0path='/org/freedesktop/NetworkManager/ActiveConnection/'";
  const std::string objects = fromIt + "interface='" + objectManagerInterface + "',";
  const std::string settings = fromIt + "interface='" + settingsInterface + "',";

  signals_.watchOwner(networkManager, [this](const std::string& owner) { ownerChanged(owner); });
  signals_.watch(objects + "member='InterfacesAdded'," + activations,
                 fromService([this](sdbus::Message& message) {
                   Path path;
                   Settings interfaces;
                   message >> path >> interfaces;
                   if (const auto active = interfaces.find(activeInterface); active != interfaces.end()) {
                     add(path, active->second);
                     announceChanges();
                   }
                 }));
  signals_.watch(objects + "member='InterfacesRemoved'," + activations,
                 fromService([this](sdbus::Message& message) {
                   Path path;
                   message >> path;
                   std::erase_if(activations_, [&](const auto& known) { return known.first == path; });
                   announceChanges();
                 }));
  signals_.watch(fromIt + "interface='" + propertiesInterface + "',member='PropertiesChanged',arg0='" +
                     activeInterface + "'",
                 fromService([this](sdbus::Message& message) {
                   std::string interface;
                   Values changed;
                   message >> interface >> changed;
                   activationChanged(Path(message.getPath()), changed);
                   announceChanges();
                 }));
  signals_.watch(settings + "member='NewConnection'",
                 fromService([this](sdbus::Message&) { readProfilesSoon(); }));
  signals_.watch(settings + "member='ConnectionRemoved'", fromService([this](sdbus::Message& message) {
                   Path path;
                   message >> path;
                   saved_.erase(path);
                   announceChanges();
                 }));
}

void NetworkManagerClient::ownerChanged(const std::string& owner) {
  if (owner == owner_) {
    return;
  }
  owner_ = owner;
  activations_.clear();
  announceChanges();
  if (!owner.empty()) {
    readActivations();
  }
}

void NetworkManagerClient::add(const Path& path, const Values& properties) {
  const auto uuid = properties.find("Uuid");
  if (uuid != properties.end()) {
    activations_.emplace_back(path, Activation{.uuid = uuid->second.get<std::string>()});
    activationChanged(path, properties);
  }
}

void NetworkManagerClient::activationChanged(const Path& path, const Values& properties) {
  const auto known = std::ranges::find(activations_, path, &Activations::value_type::first);
  const auto state = properties.find("State");
  if (known != activations_.end() && state != properties.end()) {
    known->second.state = state->second.get<std::uint32_t>();
    known->second.wasUp = known->second.wasUp || known->second.state == activated;
  }
}

// Reads all activations at once. The reply is handled in order with the signals, so none of them is older
// than the reply.
void NetworkManagerClient::readActivations() {
  isReadingActivations_ = true;
  calls_.send(
      {networkManager, objectsPath, objectManagerInterface, "GetManagedObjects"}, options_.timeout,
      [this](sdbus::MethodReply& answer) {
        std::map<Path, Settings> objects;
        answer >> objects;
        activations_.clear();
        for (const auto& [path, interfaces] : objects) {
          if (const auto active = interfaces.find(activeInterface); active != interfaces.end()) {
            add(path, active->second);
          }
        }
        std::ranges::sort(activations_, {}, [](const auto& known) {  // by number
          return std::pair(known.first.size(), known.first);
        });
        readProfiles();
        looked();
      },
      [this](const sdbus::Error&) { looked(); });
}

void NetworkManagerClient::looked() {
  isReadingActivations_ = false;
  for (const auto& deferred : std::exchange(deferred_, {})) {
    try {
      deferred.work();
    } catch (const sdbus::Error& error) {
      deferred.failed(error);
    }
  }
}

// Once for all signals that are pending: a starting NetworkManager announces each connection.
void NetworkManagerClient::readProfilesSoon() {
  if (!std::exchange(willReadProfiles_, true)) {
    thread_.postIfJoined([this](sdbus::IConnection&) {
      willReadProfiles_ = false;
      readProfiles();
    });
  }
}

std::vector<NetworkManagerProfile> NetworkManagerClient::readProfiles() {
  std::vector<Path> paths;
  object(settingsPath)->callMethod("ListConnections").onInterface(settingsInterface).storeResultsTo(paths);
  std::vector<NetworkManagerProfile> profiles;
  std::map<Path, std::string> saved;
  for (const Path& path : paths) {
    try {
      if (auto profile = profileFrom(settingsOf(path), options_.serviceType)) {
        saved[path] = profile->uuid;
        known_.try_emplace(profile->uuid, statusOf(profile->uuid));
        profiles.push_back(std::move(*profile));
      }
    } catch (const sdbus::Error& error) {
      if (!saysNotThere(error) && !saysNotOurs(error)) {
        throw;
      }
    }
  }
  saved_ = std::move(saved);
  announceChanges();
  return profiles;
}

NetworkManagerClient::Settings NetworkManagerClient::settingsOf(const Path& path) {
  Settings settings;
  object(path)->callMethod("GetSettings").onInterface(connectionInterface).storeResultsTo(settings);
  return settings;
}

std::optional<NetworkManagerClient::Path> NetworkManagerClient::pathOf(const std::string& uuid) {
  try {
    Path path;
    object(settingsPath)
        ->callMethod("GetConnectionByUuid")
        .onInterface(settingsInterface)
        .withArguments(uuid)
        .storeResultsTo(path);
    return path;
  } catch (const sdbus::Error& error) {
    if (saysNotThere(error)) {
      return std::nullopt;
    }
    throw;
  }
}

NetworkManagerProfile NetworkManagerClient::profileAt(const Path& path) {
  auto profile = profileFrom(settingsOf(path), options_.serviceType);
  if (!profile) {
    throw refusal("The connection belongs to another program by now.");
  }
  return std::move(*profile);
}

NetworkManagerClient::Activation* NetworkManagerClient::activationOf(const std::string& uuid) {
  const auto newest = std::find_if(activations_.rbegin(), activations_.rend(),
                                   [&](const auto& known) { return known.second.uuid == uuid; });
  return newest == activations_.rend() ? nullptr : &newest->second;
}

TunnelStatus NetworkManagerClient::statusOf(const std::string& uuid) {
  const auto* activation = activationOf(uuid);
  if (!activation) {
    return TunnelStatus::disconnected;
  }
  if (activation->state == activating && activation->wasUp) {
    return TunnelStatus::reasserting;
  }
  return activation->state < statusOfActiveState.size() ? statusOfActiveState[activation->state]
                                                        : TunnelStatus::invalid;
}

void NetworkManagerClient::announceChanges() {
  for (auto& [uuid, status] : known_) {
    const bool isSaved =
        std::ranges::find(saved_, uuid, &std::pair<const Path, std::string>::second) != saved_.end();
    const auto present = isSaved ? statusOf(uuid) : TunnelStatus::invalid;
    if (std::exchange(status, present) != present) {
      statusChanged_(uuid, present);
    }
  }
}

void NetworkManagerClient::saveNow(const NetworkManagerProfile& profile, const Reply<void>& reply) {
  Settings settings;
  const auto path = pathOf(profile.uuid);
  if (!path) {
    // Registered first, because its signal may arrive before the reply.
    known_.try_emplace(profile.uuid, TunnelStatus::invalid);
    write(profile, settings);
    calls_.send(
        {networkManager, settingsPath, settingsInterface, "AddConnection2"}, options_.promptTimeout,
        [this, uuid = profile.uuid, reply](sdbus::MethodReply& answer) {
          Path added;
          answer >> added;
          saved_[added] = uuid;
          announceChanges();
          reply(success());
        },
        failing<void>(reply), settings, keptOnDisk, Values());
    return;
  }
  profileAt(*path);  // throws if it is not ours any more
  settings = settingsOf(*path);
  write(profile, settings);
  calls_.send(
      {networkManager, *path, connectionInterface, "Update2"}, options_.promptTimeout,
      [reply](sdbus::MethodReply&) { reply(success()); }, failing<void>(reply), settings, keptOnDisk,
      Values());
}

void NetworkManagerClient::startNow(const std::string& uuid, const Reply<void>& reply) {
  const auto path = pathOf(uuid);
  if (!path) {
    throw refusal("NetworkManager has no such connection.");
  }
  if (const auto profile = profileAt(*path); !profile.enabled) {
    throw refusal("“" + profile.name + "” is switched off.");
  }
  const auto* activation = activationOf(uuid);
  if (!activation || activation->state > activated) {
    activate(*path, reply);
  } else {
    reply(success());
  }
}

void NetworkManagerClient::activate(const Path& connection, const Reply<void>& reply) {
  const Path ofItsChoice("/");
  calls_.send(
      {networkManager, networkManagerPath, networkManager, "ActivateConnection"}, options_.promptTimeout,
      [reply](sdbus::MethodReply&) { reply(success()); },
      [reply](const sdbus::Error& error) {
        if (isNamed(error, {"org.freedesktop.NetworkManager.ConnectionAlreadyActive"})) {
          reply(success());
        } else {
          reply(errorFrom(error));
        }
      },
      connection, ofItsChoice, ofItsChoice);
}

std::unique_ptr<sdbus::IProxy> NetworkManagerClient::object(const std::string& path) {
  return sdbus::createProxy(*bus_, networkManager, path);
}

}  // namespace quillmar
