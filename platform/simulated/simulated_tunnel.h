#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dispatch.h"
#include "platform/tunnel.h"

namespace quillmar {

// A configuration in the system's preferences.
struct SavedTunnel {
  std::optional<TunnelProtocol> protocolConfiguration;
  std::string localizedDescription;
  bool isEnabled = false;
  std::vector<OnDemandRuleConnect> onDemandRules;
  bool isOnDemandEnabled = false;
  friend bool operator==(const SavedTunnel&, const SavedTunnel&) = default;
};

// A tunnel service without a tunnel, for tests, the driver and sandbox runs. By default it only records: a
// start is accepted without effect, and the status changes by `setStatus`. `behaveLikePlatform` makes it
// change by itself. Completions come on a background queue; observers are called on the main queue, once for
// each change. As on the real platform each load creates new configuration objects, and each saved
// configuration has one connection. Main thread only.
class SimulatedTunnel final : public TunnelService {
 public:
  enum class Operation { load, save, reload, start };
  static std::string_view name(Operation operation);

  struct Call {
    Operation operation;
    SavedTunnel sent;  // what a `save` sent, else empty
    friend bool operator==(const Call&, const Call&) = default;
  };

  // Persists the saved configurations between runs, as one text.
  struct Storage {
    std::function<std::optional<std::string>()> read;
    std::function<void(const std::string&)> write;
  };

  // Asks whether the program may add a configuration. Called on the main thread; the answer may come on any.
  using PermissionPrompt = std::function<void(std::function<void(bool granted)>)>;

  explicit SimulatedTunnel(Dispatch& dispatch, Storage storage = {});
  ~SimulatedTunnel() override;

  void loadAll(ListCompletion completion) override;
  std::shared_ptr<TunnelConfiguration> makeConfiguration() override;
  Subscription observeStatus(std::function<void(TunnelConnection&)> observer) override;

  // The first save of a configuration then asks `prompt`; without a prompt it is granted, and a refusal fails
  // with "permission denied". Starting a saved, enabled configuration goes through connecting to connected
  // after `connectTime`.
  void behaveLikePlatform(PermissionPrompt prompt = {}, Duration connectTime = Duration(400));

  // Every call of this kind fails with the text; an empty text ends that.
  void fail(Operation operation, std::optional<std::string> text);
  // The delay of load, save and reload. Zero by default.
  void setLatency(Duration latency);

  // Act like a person in the system's settings. Indices are those of `saved()`.
  std::vector<SavedTunnel> saved() const;
  void put(SavedTunnel configuration);
  void change(std::size_t index, const std::function<void(SavedTunnel&)>& edit);
  void removeSaved(std::size_t index);

  TunnelStatus status(std::size_t index) const;
  void setStatus(std::size_t index, TunnelStatus status);
  // Refers to the configuration that was saved or started last. False if there is none.
  bool setStatus(TunnelStatus status);

  // All calls of the application, in order.
  const std::vector<Call>& calls() const;
  std::vector<Operation> operations() const;
  void forgetCalls();

 private:
  struct State;
  class Connection;
  class Configuration;

  std::shared_ptr<State> state_;
};

}  // namespace quillmar
