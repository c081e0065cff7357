#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/result.h"
#include "foundation/signal.h"
#include "platform/port.h"

namespace quillmar {

// The platform's numbers, which appear in log lines.
enum class TunnelStatus {
  invalid = 0,
  disconnected = 1,
  connecting = 2,
  connected = 3,
  reasserting = 4,
  disconnecting = 5
};

// A failure of the platform's tunnel service, with the platform's text.
struct TunnelError {
  std::string description;
  std::string localizedDescription() const { return description; }
  friend bool operator==(const TunnelError&, const TunnelError&) = default;
};

// The tunnel program and its parameters.
struct TunnelProtocol {
  std::string providerBundleIdentifier;
  std::string serverAddress;
  std::map<std::string, std::string> providerConfiguration;
  friend bool operator==(const TunnelProtocol&, const TunnelProtocol&) = default;
};

enum class InterfaceType { any = 0, ethernet = 1, wifi = 2, cellular = 3 };

// Asks the platform to start the tunnel by itself on matching networks.
struct OnDemandRuleConnect {
  InterfaceType interfaceTypeMatch = InterfaceType::any;
  friend bool operator==(const OnDemandRuleConnect&, const OnDemandRuleConnect&) = default;
};

class TunnelConnection : public Port {
 public:
  virtual TunnelStatus status() const = 0;
  // Only requests the start; the status reports the result.
  virtual Result<void> startTunnel() = 0;
};

// One configuration in the system's preferences, or a new one before its first save. Changing a property has
// no effect before `save`; `load` reads the stored values. Main thread only; completions may come on any
// thread.
class TunnelConfiguration : public Port {
 public:
  using Completion = std::function<void(std::optional<Error>)>;

  // nullopt if the configuration is not a packet tunnel.
  std::optional<TunnelProtocol> protocolConfiguration;
  std::string localizedDescription;
  bool isEnabled = false;
  std::vector<OnDemandRuleConnect> onDemandRules;
  bool isOnDemandEnabled = false;

  // The first save of a configuration may ask the user; a refusal is an error.
  //
  // While a save is pending, further saves of the same configuration wait for its answer, from whichever
  // object they come, so that the user is asked once. If it fails, they fail with the same error. Otherwise
  // the last one's values are saved next, unless they are the same. Loads don't wait for saves.
  virtual void save(Completion completion) = 0;
  virtual void load(Completion completion) = 0;
  virtual TunnelConnection& connection() = 0;
};

// The platform's tunnel service: this application's configurations and their connections.
class TunnelService : public Port {
 public:
  using Configurations = std::vector<std::shared_ptr<TunnelConfiguration>>;
  using ListCompletion = std::function<void(Result<Configurations>)>;

  // The completion may come on any thread.
  virtual void loadAll(ListCompletion completion) = 0;
  // A new configuration. Until it is saved, each call returns another object of the same one. If two callers
  // both found none, the second save therefore changes what the first added.
  virtual std::shared_ptr<TunnelConfiguration> makeConfiguration() = 0;
  // Called on the main queue for each status change of any connection that the application sees.
  virtual Subscription observeStatus(std::function<void(TunnelConnection&)> observer) = 0;
};

}  // namespace quillmar
