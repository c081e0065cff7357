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

// A configuration as it stands in the system's preferences.
struct SavedTunnel {
  std::optional<TunnelProtocol> protocolConfiguration;
  std::string localizedDescription;
  bool isEnabled = false;
  std::vector<OnDemandRuleConnect> onDemandRules;
  bool isOnDemandEnabled = false;
  friend bool operator==(const SavedTunnel&, const SavedTunnel&) = default;
};

// A tunnel service without a tunnel, for tests, the driver and sandbox runs. At first it only records: a
// start is accepted and changes nothing, a status changes when `setStatus` says so. `behaveLikePlatform`
// makes it act by itself. Completions come on a background queue, observers are told on the main queue, once
// for each change. As on the real platform each load gives configuration objects of its own, and one
// connection belongs to each saved configuration. To be used on the main thread.
class SimulatedTunnel final : public TunnelService {
 public:
  enum class Operation { load, save, reload, start };
  static std::string_view name(Operation operation);

  struct Call {
    Operation operation;
    SavedTunnel sent;  // what a `save` brought; empty otherwise
    friend bool operator==(const Call&, const Call&) = default;
  };

  // Keeps the saved configurations from one run of the program to the next, as one text.
  struct Storage {
    std::function<std::optional<std::string>()> read;
    std::function<void(const std::string&)> write;
  };

  // Asks a person whether the program may add a configuration. Called on the main thread; the answer may come
  // on any.
  using PermissionPrompt = std::function<void(std::function<void(bool granted)>)>;

  explicit SimulatedTunnel(Dispatch& dispatch, Storage storage = {});
  ~SimulatedTunnel() override;

  void loadAll(ListCompletion completion) override;
  std::shared_ptr<TunnelConfiguration> makeConfiguration() override;
  Subscription observeStatus(std::function<void(TunnelConnection&)> observer) override;

  // From now on the first save of a configuration asks `prompt` (none grants; a refusal fails with
  // "permission denied"), and a start of a saved, enabled configuration leads through connecting to connected
  // after `connectTime`.
  void behaveLikePlatform(PermissionPrompt prompt = {}, Duration connectTime = Duration(400));

  // Lets every call of this kind fail with the text, until told otherwise by an empty one.
  void fail(Operation operation, std::optional<std::string> text);
  // How long load, save and reload take. Nothing at first.
  void setLatency(Duration latency);

  // What the system's own settings would show and change. Indices are those of `saved()`.
  std::vector<SavedTunnel> saved() const;
  void put(SavedTunnel configuration);
  void change(std::size_t index, const std::function<void(SavedTunnel&)>& edit);
  void removeSaved(std::size_t index);

  TunnelStatus status(std::size_t index) const;
  void setStatus(std::size_t index, TunnelStatus status);
  // Of the configuration that the application saved or started last; false when there is none.
  bool setStatus(TunnelStatus status);

  // Every call of the application, in order.
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
