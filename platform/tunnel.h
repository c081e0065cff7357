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

// The numbers are the platform's and appear in log lines.
enum class TunnelStatus {
  invalid = 0,
  disconnected = 1,
  connecting = 2,
  connected = 3,
  reasserting = 4,
  disconnecting = 5
};

// A failure of the platform's tunnel service, in its own words.
struct TunnelError {
  std::string description;
  std::string localizedDescription() const { return description; }
  friend bool operator==(const TunnelError&, const TunnelError&) = default;
};

// What the tunnel program is given, and which program it is.
struct TunnelProtocol {
  std::string providerBundleIdentifier;
  std::string serverAddress;
  std::map<std::string, std::string> providerConfiguration;
  friend bool operator==(const TunnelProtocol&, const TunnelProtocol&) = default;
};

enum class InterfaceType { any = 0, ethernet = 1, wifi = 2, cellular = 3 };

// Asks the platform to bring the tunnel up by itself on matching networks.
struct OnDemandRuleConnect {
  InterfaceType interfaceTypeMatch = InterfaceType::any;
  friend bool operator==(const OnDemandRuleConnect&, const OnDemandRuleConnect&) = default;
};

class TunnelConnection : public Port {
 public:
  virtual TunnelStatus status() const = 0;
  // Asks for the start only; the status tells the rest.
  virtual Result<void> startTunnel() = 0;
};

// One configuration in the system's preferences, or a new one until it is saved. Properties are plain values
// on this side; `save` sends them, `load` fetches them again. Main thread only; completions may arrive on any
// thread.
class TunnelConfiguration : public Port {
 public:
  using Completion = std::function<void(std::optional<Error>)>;

  // Empty where the configuration is of no packet tunnel.
  std::optional<TunnelProtocol> protocolConfiguration;
  std::string localizedDescription;
  bool isEnabled = false;
  std::vector<OnDemandRuleConnect> onDemandRules;
  bool isOnDemandEnabled = false;

  // The first save of a configuration may ask the user; a refusal arrives as an error.
  //
  // Nobody is asked the same twice: while a save is unanswered, further ones of the same configuration, from
  // any of its objects, wait for the answer. An error is theirs too. Otherwise what the last of them brought
  // is saved after it, unless that is the same. Loads wait for no save.
  virtual void save(Completion completion) = 0;
  virtual void load(Completion completion) = 0;
  virtual TunnelConnection& connection() = 0;
};

// The platform's tunnel service: this application's configurations and the status of connections.
class TunnelService : public Port {
 public:
  using Configurations = std::vector<std::shared_ptr<TunnelConfiguration>>;
  using ListCompletion = std::function<void(Result<Configurations>)>;

  // The completion may arrive on any thread.
  virtual void loadAll(ListCompletion completion) = 0;
  // A new configuration. There is one at most: until it is saved, each call gives another object of the same,
  // so that of two who both found none the second changes what the first has added.
  virtual std::shared_ptr<TunnelConfiguration> makeConfiguration() = 0;
  // Each status change of any connection that the application sees, on the main queue.
  virtual Subscription observeStatus(std::function<void(TunnelConnection&)> observer) = 0;
};

}  // namespace quillmar
