#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/application_environment.h"
#include "app/session/role_manager.h"
#include "child/background_service.h"
#include "child/child_app_state.h"
#include "child/vpn_dns_manager.h"
#include "platform/linux/instance_lock.h"
#include "platform/linux/service_manager.h"
#include "platform/linux/signal_watch.h"
#include "platform/linux/system_log.h"
#include "programs/agent/agent_machine.h"
#include "programs/agent/commands.h"
#include "programs/agent/terminal.h"
#include "programs/control/control_handler.h"
#include "programs/control/control_server.h"
#include "programs/control/lock_attempt.h"

namespace quillmar::agent {
namespace {

using Tell = std::function<void(const std::string&)>;

// Writes a line for each change that its user may want to know of.
class Events {
 public:
  Events(Environment& environment, Tell tell) : tell_(std::move(tell)) {
    auto& child = *environment.childAppState();
    auto& vpn = *environment.vpnManager();
    auto& service = *environment.backgroundService();
    checkins_ = child.observe([this, &child, &service](const Member& changed) {
      if (&changed == &child.isConnectedToServer && child.isEnrolled()) {
        tellConnection(child.isConnectedToServer(), service.checkinError());
      }
    });
    changes_.push_back(vpn.statusMessage.onChange([this, &vpn] { tell_("Tunnel: " + vpn.statusMessage()); }));
    changes_.push_back(child.dohConfigWarning.onChange([this, &child] {
      if (!child.dohConfigWarning().empty()) {
        tell_(child.dohConfigWarning());
      }
    }));
    changes_.push_back(child.dohEndpoint.onChange([this, &child] {
      if (!child.dohEndpoint().empty()) {
        tell_("DoH Endpoint: " + child.dohEndpoint());
      }
    }));
    changes_.push_back(child.isEnrolled.onChange([this, &child] {
      if (!child.isEnrolled()) {
        tell_("This device has forgotten its enrollment and is no longer looked after.");
      }
    }));
  }

 private:
  void tellConnection(bool isConnected, const std::optional<Error>& error) {
    if (!isConnected && !error) {
      return;
    }
    const std::string event = error ? control::checkinFailure(*error) : "The service is reached.";
    if (event != std::exchange(lastConnection_, event)) {
      tell_(event);
    }
  }

  const Tell tell_;
  std::string lastConnection_;
  Subscription checkins_;
  std::vector<Subscription> changes_;
};

// The child's background work, while this process holds the installation's lock.
class Work {
 public:
  Work(const Options& options, AsioDispatch& dispatch, Log& log, Tell tell,
       control::ControlHandler::Duties duties)
      : machine_(options, dispatch, log),
        environment_(machine_.ports(), deploymentsFor(options)),
        events_(environment_, std::move(tell)),
        handler_(environment_, std::move(duties)) {}
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  ~Work() { environment_.backgroundService()->stop(); }

  std::optional<std::string> problemWithSettings() const { return machine_.problemWithSettings(); }
  bool isParents() { return environment_.roleManager()->currentRole() == DeviceRole::parent; }

  // False if no child's device is enrolled here.
  bool start() {
    const auto child = environment_.childAppState();
    if (environment_.roleManager()->currentRole() != DeviceRole::child || !child->isEnrolled()) {
      return false;
    }
    environment_.backgroundService()->start(child);
    return true;
  }

  control::ControlHandler& handler() { return handler_; }

  // Runs `reaction` after each check-in, in the same turn of the main queue.
  void afterCheckin(const std::function<void()>& reaction) {
    afterCheckin_ = environment_.childAppState()->observe(
        [reaction, &state = *environment_.childAppState()](const Member& changed) {
          if (&changed == &state.isConnectedToServer) {
            reaction();
          }
        });
  }

 private:
  AgentMachine machine_;
  ApplicationEnvironment environment_;
  Events events_;
  control::ControlHandler handler_;
  Subscription afterCheckin_;
};

// Takes the installation's lock and does the work while it holds it. It yields to a window, and waits until
// it gets the lock back.
class Agent {
 public:
  explicit Agent(const Options& options)
      : options_(options),
        log_(options.tellsEverything),
        signals_(dispatch_, [this](int) { end(ExitStatus::done); }) {
    door_->agent = this;
  }
  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;
  ~Agent() {
    const std::scoped_lock lock(door_->mutex);
    door_->agent = nullptr;
  }

  ExitStatus carryOut() {
    if (auto attempt = InstanceLock::attempt(options_.dataDirectory); attempt.lock) {
      take(std::move(attempt.lock));
    } else if (attempt.isElsewhere()) {
      tell("Another program of this installation does the work. Waiting.");
      await();
    } else {
      workWithoutLock();
    }
    if (!isEnding_) {
      dispatch_.run();
    }
    return status_;
  }

 private:
  // Shared, because the thread that waits for the lock may outlive the agent.
  struct Door {
    std::mutex mutex;
    Agent* agent = nullptr;
  };

  // A read-only disk must not leave a child unprotected.
  void workWithoutLock() {
    const auto problem = control::problemWithFolder(options_.dataDirectory);
    if (!isEnrolledOnDisk(options_, log_).value_or(false)) {
      complain(problem.value_or("This device is not enrolled."));
      end(ExitStatus::failed);
      return;
    }
    if (problem) {
      tell(*problem);
    }
    take(std::nullopt);
  }

  void take(std::optional<InstanceLock> lock) {
    lock_ = std::move(lock);
    work_ = std::make_unique<Work>(
        options_, dispatch_, log_, [this](const std::string& event) { tell(event); },
        control::ControlHandler::Duties{.worker = control::Worker::agent, .show = {}, .yield = yielding()});
    if (const auto problem = work_->problemWithSettings()) {
      complain(*problem);
      end(ExitStatus::failed);
      return;
    }
    if (work_->isParents()) {
      complain("This is a parent's device.");
      end(ExitStatus::parentsDevice);
      return;
    }
    server_ = std::make_unique<control::ControlServer>(
        options_.dataDirectory, dispatch_,
        [this](const std::string& line, control::ControlServer::Reply reply) {
          if (work_) {
            work_->handler().handle(line, std::move(reply));
          }
        });
    work_->afterCheckin([this] { server_->keepReachable(); });
    tell(work_->start() ? "Looking after this device." : "This device is not enrolled. Waiting for that.");
  }

  // Empty without a lock, as there is nothing to give.
  std::function<void(std::function<void(FileDescriptor)>)> yielding() {
    if (!lock_) {
      return {};
    }
    return [this](std::function<void(FileDescriptor)> give) {
      dispatch_.main().async([this, give = std::move(give)] { leave(give); });
    };
  }

  // All work, including requests in flight, ends before another process can have the lock.
  void leave(const std::function<void(FileDescriptor)>& give) {
    if (!lock_) {
      return;
    }
    work_.reset();
    give(InstanceLock::handOver(std::move(*std::exchange(lock_, std::nullopt))));
    server_.reset();
    tell("Another program of this installation has taken over. Waiting.");
    await();
  }

  void await() {
    InstanceLock::whenFree(options_.dataDirectory, [door = door_](std::optional<InstanceLock> taken) {
      const std::scoped_lock guard(door->mutex);
      if (door->agent) {
        door->agent->takeLater(std::move(taken));
      }
    });
  }

  void takeLater(std::optional<InstanceLock> taken) {
    dispatch_.main().async([this, lock = std::make_shared<std::optional<InstanceLock>>(std::move(taken))] {
      if (*lock) {
        take(std::move(**lock));
      } else {
        complain(control::problemWithFolder(options_.dataDirectory)
                     .value_or("The folder " + options_.dataDirectory.string() + " can't be used."));
        end(ExitStatus::failed);
      }
    });
  }

  void tell(const std::string& event) {
    writeLine(singleLine(event));
    manager_.tellStatus(singleLine(event));
  }

  void end(ExitStatus status) {
    status_ = status;
    isEnding_ = true;
    server_.reset();
    work_.reset();
    dispatch_.stop();
  }

  const Options& options_;
  AgentLog log_;
  AsioDispatch dispatch_;
  const SignalWatch signals_;
  const ServiceManager manager_{dispatch_};
  const std::shared_ptr<Door> door_ = std::make_shared<Door>();
  std::optional<InstanceLock> lock_;
  std::unique_ptr<Work> work_;
  std::unique_ptr<control::ControlServer> server_;
  ExitStatus status_ = ExitStatus::done;
  bool isEnding_ = false;
};

}  // namespace

ExitStatus run(const Options& options) {
  holdEndingSignals();
  const auto only = InstanceLock::attempt(options.dataDirectory, control::agentLock);
  if (only.isElsewhere()) {
    complain("quillmar-agent runs already.");
    return ExitStatus::busy;
  }
  return Agent(options).carryOut();
}

}  // namespace quillmar::agent
