#include "platform/linux/networkmanager_tunnel.h"

#include <future>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "foundation/signal.h"
#include "foundation/text.h"
#include "platform/hop.h"
#include "platform/joined_saves.h"
#include "platform/linux/networkmanager_client.h"
#include "platform/linux/networkmanager_profile.h"
#include "platform/service_configuration.h"

namespace quillmar {
namespace {

using Listed = std::vector<NetworkManagerClient::Listed>;

template <class T>
std::optional<Error> errorIn(const Result<T>& result) {
  return result.ok() ? std::nullopt : std::optional(result.error());
}

}  // namespace

// All of it belongs to the main thread. The client's replies come on the client's thread, which must never
// hold the state: it would have to end itself.
struct NetworkManagerTunnel::State : std::enable_shared_from_this<State> {
  State(Dispatch& dispatch, std::string bundleIdentifier, std::chrono::milliseconds startPatience)
      : dispatch(dispatch), bundleIdentifier(std::move(bundleIdentifier)), startPatience(startPatience) {}

  void open(const Options& options);
  // A reply that may come on any thread and calls `function(state, ...)` on the main thread, if the state is
  // still there by then.
  template <class Function>
  auto onMain(Function function);
  std::shared_ptr<Connection> connection(const std::string& uuid, TunnelStatus ifUnknown);
  std::shared_ptr<Connection> newConnection();
  void send(const std::string& uuid, const NetworkManagerProfile& profile);
  void changeStatus(const std::string& uuid, TunnelStatus status);
  Configurations configurations(const Listed& listed);

  Dispatch& dispatch;
  const std::string bundleIdentifier;
  const std::chrono::milliseconds startPatience;
  std::map<std::string, std::shared_ptr<Connection>> connections;
  std::shared_ptr<Connection> newest;
  Signal<TunnelConnection&> statusChanged;
  JoinedSaves<std::string, NetworkManagerProfile> saves{
      [this](const std::string& uuid, const NetworkManagerProfile& profile) { send(uuid, profile); }};
  std::unique_ptr<NetworkManagerClient> client;
};

template <class Function>
auto NetworkManagerTunnel::State::onMain(Function function) {
  return hoppingToMain(dispatch,
                       [known = weak_from_this(), function = std::move(function)](auto... arguments) {
                         if (const auto state = known.lock()) {
                           function(*state, std::move(arguments)...);
                         }
                       });
}

class NetworkManagerTunnel::Connection final : public TunnelConnection {
 public:
  Connection(std::weak_ptr<State> state, std::string uuid, TunnelStatus status)
      : state_(std::move(state)), uuid_(std::move(uuid)), status_(status) {}

  const std::string& uuid() const { return uuid_; }
  TunnelStatus status() const override { return status_; }
  Result<void> startTunnel() override;

  // False where it is no change.
  bool become(TunnelStatus status) { return std::exchange(status_, status) != status; }

 private:
  const std::weak_ptr<State> state_;
  const std::string uuid_;
  TunnelStatus status_;
};

Result<void> NetworkManagerTunnel::Connection::startTunnel() {
  const auto state = state_.lock();
  if (!state) {
    return Error(TunnelError{"The tunnel service is gone."});
  }
  const auto promise = std::make_shared<std::promise<Result<void>>>();
  auto answer = promise->get_future();
  state->client->start(uuid_, [promise](Result<void> result) { promise->set_value(std::move(result)); });
  return answer.wait_for(state->startPatience) == std::future_status::ready ? answer.get() : success();
}

class NetworkManagerTunnel::Configuration final : public ServiceConfiguration<State, Connection>,
                                                  public std::enable_shared_from_this<Configuration> {
 public:
  using ServiceConfiguration::ServiceConfiguration;

  void save(Completion completion) override;
  void load(Completion completion) override;
};

void NetworkManagerTunnel::Configuration::save(Completion completion) {
  const auto state = service();
  if (!state) {
    return;
  }
  if (!protocolConfiguration || protocolConfiguration->providerBundleIdentifier != state->bundleIdentifier) {
    state->onMain([completion = std::move(completion)](State&) {
      completion(TunnelError{"The configuration is not one of this program's tunnel."});
    })();
    return;
  }
  state->connections.emplace(sharedConnection()->uuid(), sharedConnection());
  state->saves.save(sharedConnection()->uuid(),
                    profileOf(*this, *protocolConfiguration, sharedConnection()->uuid()),
                    std::move(completion));
}

void NetworkManagerTunnel::Configuration::load(Completion completion) {
  if (const auto state = service()) {
    state->client->fetch(sharedConnection()->uuid(),
                         state->onMain([self = shared_from_this(), completion = std::move(completion)](
                                           State&, const Result<NetworkManagerProfile>& fetched) {
                           if (fetched.ok()) {
                             assign(*self, fetched.value());
                           }
                           completion(errorIn(fetched));
                         }));
  }
}

void NetworkManagerTunnel::State::open(const Options& options) {
  client = std::make_unique<NetworkManagerClient>(
      NetworkManagerClient::Options{
          .busAddress = options.busAddress,
          .serviceType = bundleIdentifier,
          .patience = options.patience,
          .promptPatience = options.promptPatience,
      },
      onMain([](State& state, const std::string& uuid, TunnelStatus status) {
        state.changeStatus(uuid, status);
      }));
}

std::shared_ptr<NetworkManagerTunnel::Connection> NetworkManagerTunnel::State::connection(
    const std::string& uuid, TunnelStatus ifUnknown) {
  auto& known = connections[uuid];
  if (!known) {
    known = std::make_shared<Connection>(weak_from_this(), uuid, ifUnknown);
  }
  return known;
}

std::shared_ptr<NetworkManagerTunnel::Connection> NetworkManagerTunnel::State::newConnection() {
  if (!newest || newest->status() != TunnelStatus::invalid) {
    newest = std::make_shared<Connection>(weak_from_this(), lowercased(newUUID()), TunnelStatus::invalid);
  }
  return newest;
}

void NetworkManagerTunnel::State::send(const std::string& uuid, const NetworkManagerProfile& profile) {
  client->save(profile, onMain([uuid](State& state, const Result<void>& result) {
                 state.saves.answered(uuid, errorIn(result));
               }));
}

void NetworkManagerTunnel::State::changeStatus(const std::string& uuid, TunnelStatus status) {
  const auto changed = connection(uuid, TunnelStatus::invalid);
  if (changed->become(status)) {
    statusChanged.emit(*changed);
  }
}

TunnelService::Configurations NetworkManagerTunnel::State::configurations(const Listed& listed) {
  Configurations configurations;
  for (const auto& [profile, status] : listed) {
    configurations.push_back(
        std::make_shared<Configuration>(weak_from_this(), connection(profile.uuid, status)));
    assign(*configurations.back(), profile);
  }
  return configurations;
}

NetworkManagerTunnel::NetworkManagerTunnel(Dispatch& dispatch, std::string bundleIdentifier)
    : NetworkManagerTunnel(dispatch, std::move(bundleIdentifier), Options()) {}

NetworkManagerTunnel::NetworkManagerTunnel(Dispatch& dispatch, std::string bundleIdentifier,
                                           const Options& options)
    : state_(std::make_shared<State>(dispatch, std::move(bundleIdentifier), options.startPatience)) {
  state_->open(options);
}

NetworkManagerTunnel::~NetworkManagerTunnel() = default;

void NetworkManagerTunnel::loadAll(ListCompletion completion) {
  state_->client->list(
      state_->onMain([completion = std::move(completion)](State& state, const Result<Listed>& listed) {
        if (listed.ok()) {
          completion(state.configurations(listed.value()));
        } else {
          completion(listed.error());
        }
      }));
}

std::shared_ptr<TunnelConfiguration> NetworkManagerTunnel::makeConfiguration() {
  return std::make_shared<Configuration>(state_, state_->newConnection());
}

Subscription NetworkManagerTunnel::observeStatus(std::function<void(TunnelConnection&)> observer) {
  return state_->statusChanged.connect(std::move(observer));
}

}  // namespace quillmar
