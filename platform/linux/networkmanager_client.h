#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/result.h"
#include "platform/linux/bus_calls.h"
#include "platform/linux/bus_signals.h"
#include "platform/linux/bus_thread.h"
#include "platform/linux/networkmanager_profile.h"
#include "platform/tunnel.h"

namespace quillmar {

// NetworkManager's VPN connections of one service type, and their status. Operations are thread-safe;
// callbacks run on the client's thread.
class NetworkManagerClient final : private BusSession {
 public:
  struct Options {
    std::string busAddress;
    std::string serviceType;
    std::chrono::milliseconds timeout;
    std::chrono::milliseconds promptTimeout;
  };
  struct Listed {
    NetworkManagerProfile profile;
    TunnelStatus status;
  };
  using StatusChanged = std::function<void(const std::string& uuid, TunnelStatus)>;
  template <class T>
  using Reply = std::function<void(Result<T>)>;

  // A change is reported before the reply of the operation that caused it. The first listing reports no
  // changes.
  NetworkManagerClient(Options options, StatusChanged statusChanged);
  ~NetworkManagerClient() override;

  void list(const Reply<std::vector<Listed>>& reply);
  void fetch(std::string uuid, const Reply<NetworkManagerProfile>& reply);
  // Adds the connection if none has its UUID.
  void save(NetworkManagerProfile profile, const Reply<void>& reply);
  void start(std::string uuid, const Reply<void>& reply);

 private:
  using Settings = NetworkManagerSettings;
  using Values = std::map<std::string, sdbus::Variant>;
  using Path = sdbus::ObjectPath;

  struct Deferred {
    std::function<void()> work;
    BusThread::Failure failed;
  };
  struct Activation {
    std::string uuid;
    std::uint32_t state = 0;
    bool wasUp = false;
  };
  using Activations = std::vector<std::pair<Path, Activation>>;

  void joined(sdbus::IConnection& bus) override;
  void left() override;

  void watchSignals();
  void ownerChanged(const std::string& owner);
  void add(const Path& path, const Values& properties);
  void activationChanged(const Path& path, const Values& properties);
  void readActivations();
  void looked();
  void readProfilesSoon();

  std::vector<NetworkManagerProfile> readProfiles();
  Settings settingsOf(const Path& path);
  std::optional<Path> pathOf(const std::string& uuid);
  NetworkManagerProfile profileAt(const Path& path);
  Activation* activationOf(const std::string& uuid);
  TunnelStatus statusOf(const std::string& uuid);
  void announceChanges();

  // Runs `work` on the bus thread once the active connections are known.
  template <class T>
  void post(std::function<void()> work, Reply<T> reply);
  void saveNow(const NetworkManagerProfile& profile, const Reply<void>& reply);
  void startNow(const std::string& uuid, const Reply<void>& reply);
  void activate(const Path& connection, const Reply<void>& reply);

  std::unique_ptr<sdbus::IProxy> object(const std::string& path);

  const Options options_;
  const StatusChanged statusChanged_;

  // Bus thread only from here on.
  sdbus::IConnection* bus_ = nullptr;
  BusSignals signals_;
  BusCalls calls_;
  std::string owner_;  // the bus name of the running NetworkManager; empty if there is none
  std::map<Path, std::string> saved_;
  Activations activations_;  // the newest last
  std::map<std::string, TunnelStatus> known_;
  bool isReadingActivations_ = false;
  bool willReadProfiles_ = false;
  std::vector<Deferred> deferred_;  // until the active connections are known

  BusThread thread_;
};

}  // namespace quillmar
