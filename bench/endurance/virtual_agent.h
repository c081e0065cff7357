#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "app/application_environment.h"
#include "child/background_service.h"
#include "child/child_app_state.h"
#include "child/vpn_dns_manager.h"
#include "platform/log.h"
#include "platform/platform.h"
#include "platform/settings.h"
#include "platform/simulated/simulated_tunnel.h"
#include "testing/fake_ports.h"
#include "testing/memory_settings_store.h"

namespace quillmar::endurance {

// Counts the bytes that a log file would have.
class CountingLog final : public Log {
 public:
  void print(std::string_view line) override { bytes_ += line.size() + 1; }
  void system(std::string_view line) override { print(line); }
  std::size_t bytes() const { return bytes_; }

 private:
  std::size_t bytes_ = 0;
};

// The ports that all agents of a process share.
struct Surroundings {
  Dispatch& dispatch;
  HttpSession& http;
  Log& log;
  std::string root = "https://au.example";

  FakePorts fakes{dispatch};
};

// The agent's work without its process: its own settings and tunnel, and a child's background work.
class VirtualAgent {
 public:
  explicit VirtualAgent(Surroundings& surroundings)
      : surroundings_(surroundings), tunnel(surroundings.dispatch) {
    tunnel.behaveLikePlatform();
    settings.set(settings::deviceRole, std::string("child"));
    settings.set(settings::region, std::string("australia"));
    boot();
  }

  // Stores an enrollment, then restarts.
  void beEnrolled(const std::string& endpoint) {
    settings.set(settings::childIsEnrolled, true);
    settings.set(settings::childDeviceID, std::string("device-1234567890"));
    settings.set(settings::childDohEndpoint, endpoint);
    settings.set(settings::apiBaseURL, std::string("https://au.example"));
    restart();
  }

  // Restarts the process. Settings and the system's configuration stay.
  void restart() {
    environment_.reset();
    boot();
    if (child().isEnrolled()) {
      environment_->backgroundService()->start(environment_->childAppState());
    }
  }

  ApplicationEnvironment& environment() { return *environment_; }
  ChildAppState& child() { return *environment_->childAppState(); }

  bool isProtected() { return environment_->vpnManager()->isConnected(); }
  bool isReached() { return child().isConnectedToServer(); }
  // The endpoint that the system's configuration holds.
  std::string configuredEndpoint() const {
    const auto saved = tunnel.saved();
    const std::string key(VPNDNSManager::endpointKey);
    return saved.size() == 1 ? saved.front().protocolConfiguration->providerConfiguration.at(key) : "";
  }

 private:
  void boot() {
    environment_ = std::make_unique<ApplicationEnvironment>(ports(), Deployments::all(surroundings_.root));
    environment_->childAppState()->loadState();
  }

  Platform ports() {
    return surroundings_.fakes.with({.settings = settings,
                                     .http = surroundings_.http,
                                     .dispatch = surroundings_.dispatch,
                                     .log = surroundings_.log,
                                     .tunnel = tunnel});
  }

  Surroundings& surroundings_;

 public:
  MemorySettingsStore settings;
  SimulatedTunnel tunnel;

 private:
  std::unique_ptr<ApplicationEnvironment> environment_;
};

}  // namespace quillmar::endurance
