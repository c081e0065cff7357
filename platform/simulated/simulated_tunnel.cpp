#include "platform/simulated/simulated_tunnel.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "platform/joined_saves.h"
#include "platform/service_configuration.h"
#include "platform/simulated/tunnel_text.h"

namespace quillmar {
namespace {

SavedTunnel propertiesOf(const TunnelConfiguration& configuration) {
  return {configuration.protocolConfiguration, configuration.localizedDescription, configuration.isEnabled,
          configuration.onDemandRules, configuration.isOnDemandEnabled};
}

void assign(TunnelConfiguration& configuration, SavedTunnel saved) {
  configuration.protocolConfiguration = std::move(saved.protocolConfiguration);
  configuration.localizedDescription = std::move(saved.localizedDescription);
  configuration.isEnabled = saved.isEnabled;
  configuration.onDemandRules = std::move(saved.onDemandRules);
  configuration.isOnDemandEnabled = saved.isOnDemandEnabled;
}

}  // namespace

// The status belongs to the main thread like everything else; what comes from the background queue hops
// first.
class SimulatedTunnel::Connection final : public TunnelConnection,
                                          public std::enable_shared_from_this<Connection> {
 public:
  Connection(std::weak_ptr<State> state, TunnelStatus status) : state_(std::move(state)), status_(status) {}

  TunnelStatus status() const override { return status_; }
  Result<void> startTunnel() override;

  void become(TunnelStatus status);

 private:
  void connect(State& state);

  const std::weak_ptr<State> state_;
  TunnelStatus status_;
};

struct SimulatedTunnel::State : std::enable_shared_from_this<SimulatedTunnel::State> {
  struct Entry {
    SavedTunnel saved;
    std::shared_ptr<Connection> connection;
  };

  State(Dispatch& dispatch, Storage storage)
      : dispatch(dispatch),
        queue(dispatch.makeSerialQueue("simulated-tunnel")),
        storage(std::move(storage)) {}

  void record(Operation operation, SavedTunnel sent = {}) { calls.push_back({operation, std::move(sent)}); }
  std::optional<Error> failure(Operation operation) const;
  Entry* find(const Connection& connection);
  void addExisting(SavedTunnel saved);
  std::shared_ptr<Connection> newConnection();
  void send(const std::shared_ptr<Connection>& connection, const SavedTunnel& sent);
  void write(const std::shared_ptr<Connection>& connection, const SavedTunnel& sent);
  void askAndAdd(const std::shared_ptr<Connection>& connection, const SavedTunnel& sent);
  void add(const std::shared_ptr<Connection>& connection, const SavedTunnel& sent);
  void store() const;
  // `work` runs on the main thread after the latency, and what it returns goes to the completion on the
  // queue.
  template <class Work, class Completion>
  void perform(Work work, Completion completion);
  template <class Completion, class Outcome>
  void complete(Completion completion, Outcome outcome);

  Dispatch& dispatch;
  const std::shared_ptr<DispatchQueue> queue;
  const Storage storage;
  bool automatic = false;
  PermissionPrompt permissionPrompt;
  Duration connectTime{0};
  Duration latency{0};
  std::map<Operation, std::string> failures;
  std::vector<Entry> entries;
  std::shared_ptr<Connection> newest;
  std::weak_ptr<Connection> current;
  std::vector<Call> calls;
  Signal<TunnelConnection&> statusChanged;
  JoinedSaves<std::shared_ptr<Connection>, SavedTunnel> saves{
      [this](const std::shared_ptr<Connection>& connection, const SavedTunnel& sent) {
        send(connection, sent);
      }};
};

std::optional<Error> SimulatedTunnel::State::failure(Operation operation) const {
  const auto known = failures.find(operation);
  return known == failures.end() ? std::nullopt : std::optional<Error>(TunnelError{known->second});
}

SimulatedTunnel::State::Entry* SimulatedTunnel::State::find(const Connection& connection) {
  const auto found = std::ranges::find_if(
      entries, [&](const Entry& entry) { return entry.connection.get() == &connection; });
  return found == entries.end() ? nullptr : &*found;
}

void SimulatedTunnel::State::addExisting(SavedTunnel saved) {
  entries.push_back(
      {std::move(saved), std::make_shared<Connection>(weak_from_this(), TunnelStatus::disconnected)});
}

std::shared_ptr<SimulatedTunnel::Connection> SimulatedTunnel::State::newConnection() {
  if (!newest || find(*newest)) {
    newest = std::make_shared<Connection>(weak_from_this(), TunnelStatus::invalid);
  }
  return newest;
}

void SimulatedTunnel::State::store() const {
  if (!storage.write) {
    return;
  }
  std::vector<SavedTunnel> saved;
  for (const Entry& entry : entries) {
    saved.push_back(entry.saved);
  }
  storage.write(tunnelText(saved));
}

void SimulatedTunnel::State::send(const std::shared_ptr<Connection>& connection, const SavedTunnel& sent) {
  dispatch.main().asyncAfter(
      latency, [self = shared_from_this(), connection, sent] { self->write(connection, sent); });
}

void SimulatedTunnel::State::write(const std::shared_ptr<Connection>& connection, const SavedTunnel& sent) {
  if (const auto refusal = failure(Operation::save)) {
    saves.answered(connection, refusal);
  } else if (auto* entry = find(*connection)) {
    entry->saved = sent;
    current = connection;
    store();
    saves.answered(connection, std::nullopt);
  } else {
    askAndAdd(connection, sent);
  }
}

void SimulatedTunnel::State::askAndAdd(const std::shared_ptr<Connection>& connection,
                                       const SavedTunnel& sent) {
  auto answered = [self = shared_from_this(), connection, sent](bool granted) {
    self->dispatch.main().async([self, connection, sent, granted] {
      if (granted) {
        self->add(connection, sent);
      }
      self->saves.answered(connection,
                           granted ? std::nullopt : std::optional<Error>(TunnelError{"permission denied"}));
    });
  };
  if (permissionPrompt) {
    permissionPrompt(std::move(answered));
  } else {
    answered(true);
  }
}

void SimulatedTunnel::State::add(const std::shared_ptr<Connection>& connection, const SavedTunnel& sent) {
  entries.push_back({sent, connection});
  current = connection;
  store();
  connection->become(TunnelStatus::disconnected);
}

template <class Completion, class Outcome>
void SimulatedTunnel::State::complete(Completion completion, Outcome outcome) {
  queue->async([completion = std::move(completion), outcome = std::move(outcome)] { completion(outcome); });
}

template <class Work, class Completion>
void SimulatedTunnel::State::perform(Work work, Completion completion) {
  dispatch.main().asyncAfter(latency, [state = shared_from_this(), work = std::move(work),
                                       completion = std::move(completion)]() mutable {
    state->complete(std::move(completion), work(*state));
  });
}

void SimulatedTunnel::Connection::become(TunnelStatus status) {
  const auto state = state_.lock();
  if (!state || status == status_) {
    return;
  }
  status_ = status;
  state->dispatch.main().async(
      [state, connection = shared_from_this()] { state->statusChanged.emit(*connection); });
}

Result<void> SimulatedTunnel::Connection::startTunnel() {
  const auto state = state_.lock();
  if (!state) {
    return Error(TunnelError{"The tunnel service is gone."});
  }
  state->record(Operation::start);
  if (const auto failure = state->failure(Operation::start)) {
    return *failure;
  }
  if (state->automatic) {
    const auto* entry = state->find(*this);
    if (!entry) {
      return Error(TunnelError{"The configuration is not saved."});
    }
    if (!entry->saved.isEnabled) {
      return Error(TunnelError{"The configuration is disabled."});
    }
    connect(*state);
  }
  state->current = weak_from_this();
  return success();
}

void SimulatedTunnel::Connection::connect(State& state) {
  if (status_ != TunnelStatus::disconnected && status_ != TunnelStatus::disconnecting) {
    return;
  }
  become(TunnelStatus::connecting);
  state.dispatch.main().asyncAfter(state.connectTime, [known = weak_from_this()] {
    const auto connection = known.lock();
    if (connection && connection->status_ == TunnelStatus::connecting) {
      connection->become(TunnelStatus::connected);
    }
  });
}

class SimulatedTunnel::Configuration final : public ServiceConfiguration<State, Connection>,
                                             public std::enable_shared_from_this<Configuration> {
 public:
  using ServiceConfiguration::ServiceConfiguration;

  void save(Completion completion) override;
  void load(Completion completion) override;
};

void SimulatedTunnel::Configuration::save(Completion completion) {
  if (const auto state = service()) {
    SavedTunnel sent = propertiesOf(*this);
    state->record(Operation::save, sent);
    state->saves.save(sharedConnection(), std::move(sent),
                      [here = state.get(), completion = std::move(completion)](
                          const std::optional<Error>& error) { here->complete(completion, error); });
  }
}

void SimulatedTunnel::Configuration::load(Completion completion) {
  const auto state = service();
  if (!state) {
    return;
  }
  state->record(Operation::reload);
  state->perform(
      [self = shared_from_this()](State& there) -> std::optional<Error> {
        if (auto failure = there.failure(Operation::reload)) {
          return failure;
        }
        if (const auto* entry = there.find(*self->sharedConnection())) {
          assign(*self, entry->saved);
        }
        return std::nullopt;
      },
      std::move(completion));
}

std::string_view SimulatedTunnel::name(Operation operation) {
  constexpr auto names = std::to_array<std::string_view>({"load", "save", "reload", "start"});
  return names.at(static_cast<std::size_t>(operation));
}

SimulatedTunnel::SimulatedTunnel(Dispatch& dispatch, Storage storage)
    : state_(std::make_shared<State>(dispatch, std::move(storage))) {
  const auto text = state_->storage.read ? state_->storage.read() : std::nullopt;
  for (SavedTunnel& saved : savedTunnels(text.value_or(""))) {
    state_->addExisting(std::move(saved));
  }
}

SimulatedTunnel::~SimulatedTunnel() = default;

void SimulatedTunnel::loadAll(ListCompletion completion) {
  state_->record(Operation::load);
  state_->perform(
      [](State& state) -> Result<Configurations> {
        if (const auto failure = state.failure(Operation::load)) {
          return *failure;
        }
        Configurations configurations;
        for (const auto& entry : state.entries) {
          auto configuration = std::make_shared<Configuration>(state.weak_from_this(), entry.connection);
          assign(*configuration, entry.saved);
          configurations.push_back(std::move(configuration));
        }
        return configurations;
      },
      std::move(completion));
}

std::shared_ptr<TunnelConfiguration> SimulatedTunnel::makeConfiguration() {
  return std::make_shared<Configuration>(state_, state_->newConnection());
}

Subscription SimulatedTunnel::observeStatus(std::function<void(TunnelConnection&)> observer) {
  return state_->statusChanged.connect(std::move(observer));
}

void SimulatedTunnel::behaveLikePlatform(PermissionPrompt prompt, Duration connectTime) {
  state_->automatic = true;
  state_->permissionPrompt = std::move(prompt);
  state_->connectTime = connectTime;
}

void SimulatedTunnel::fail(Operation operation, std::optional<std::string> text) {
  if (text) {
    state_->failures.insert_or_assign(operation, std::move(*text));
  } else {
    state_->failures.erase(operation);
  }
}

void SimulatedTunnel::setLatency(Duration latency) { state_->latency = latency; }

std::vector<SavedTunnel> SimulatedTunnel::saved() const {
  std::vector<SavedTunnel> saved;
  for (const auto& entry : state_->entries) {
    saved.push_back(entry.saved);
  }
  return saved;
}

void SimulatedTunnel::put(SavedTunnel configuration) {
  state_->addExisting(std::move(configuration));
  state_->store();
}

void SimulatedTunnel::change(std::size_t index, const std::function<void(SavedTunnel&)>& edit) {
  edit(state_->entries.at(index).saved);
  state_->store();
}

void SimulatedTunnel::removeSaved(std::size_t index) {
  const auto connection = state_->entries.at(index).connection;
  state_->entries.erase(state_->entries.begin() + static_cast<std::ptrdiff_t>(index));
  state_->store();
  connection->become(TunnelStatus::invalid);
}

TunnelStatus SimulatedTunnel::status(std::size_t index) const {
  return state_->entries.at(index).connection->status();
}

void SimulatedTunnel::setStatus(std::size_t index, TunnelStatus status) {
  state_->entries.at(index).connection->become(status);
}

bool SimulatedTunnel::setStatus(TunnelStatus status) {
  const auto connection = state_->current.lock();
  if (connection) {
    connection->become(status);
  }
  return connection != nullptr;
}

const std::vector<SimulatedTunnel::Call>& SimulatedTunnel::calls() const { return state_->calls; }

std::vector<SimulatedTunnel::Operation> SimulatedTunnel::operations() const {
  std::vector<Operation> operations;
  for (const Call& call : state_->calls) {
    operations.push_back(call.operation);
  }
  return operations;
}

void SimulatedTunnel::forgetCalls() { state_->calls.clear(); }

}  // namespace quillmar
