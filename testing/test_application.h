#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/quillmar_app.h"
#include "child/background_service.h"
#include "child/child_app_state.h"
#include "child/vpn_dns_manager.h"
#include "identity/auth_state.h"
#include "platform/settings.h"
#include "testing/fake_platform.h"

namespace quillmar {

using StoredSettings = std::map<std::string_view, SettingValue>;

// A whole application on a machine of its own.
class TestApplication {
 public:
  static constexpr const char* serviceRoot = "https://au.example";

  // Where requests go: a session over the machine's time, and the root of the service that it reaches.
  struct Network {
    std::function<std::unique_ptr<HttpSession>(VirtualDispatch& time)> makeSession;
    std::string root;
  };

  // In the place of the simulated one; each start of the application makes its own.
  using MakeTunnel = std::function<std::unique_ptr<TunnelService>(Dispatch& time)>;

  explicit TestApplication(const StoredSettings& stored = {}, const std::optional<Network>& network = {},
                           MakeTunnel makeTunnel = {})
      : makeTunnel_(std::move(makeTunnel)),
        session_(network ? network->makeSession(machine.dispatch) : nullptr),
        root_(network ? network->root : serviceRoot) {
    for (const auto& [key, value] : stored) {
      machine.settings.set(key, value);
    }
    start();
  }

  // Ends the process and starts it anew on the same machine.
  void restart() {
    app_.reset();
    start();
  }

  QuillmarApp& app() { return *app_; }
  ApplicationEnvironment& environment() { return app_->environment(); }
  ChildAppState& child() { return *environment().childAppState(); }
  VPNDNSManager& vpn() { return *environment().vpnManager(); }
  BackgroundService& background() { return *environment().backgroundService(); }

  // The screen of this type, or null where it is not up.
  template <class Screen>
  std::shared_ptr<Screen> find() {
    for (const auto& object : app_->contentView().screens()) {
      if (auto screen = std::dynamic_pointer_cast<Screen>(object)) {
        return screen;
      }
    }
    return nullptr;
  }
  template <class Screen>
  Screen& screen() {
    const auto found = find<Screen>();
    if (!found) {
      throw std::logic_error("no such screen is up");
    }
    return *found;
  }
  std::vector<std::string> screenNames() {
    std::vector<std::string> names;
    for (const auto& object : app_->contentView().screens()) {
      names.emplace_back(object->typeName());
    }
    return names;
  }

  void settle() { machine.dispatch.settle(); }
  void advance(Duration duration) { machine.dispatch.advance(duration); }

  FakePlatform machine;

 private:
  void start() {
    tunnel_ = makeTunnel_ ? makeTunnel_(machine.dispatch) : nullptr;
    app_ = std::make_unique<QuillmarApp>(
        machine.portsWith(session_ ? *session_ : machine.http, tunnel_ ? *tunnel_ : machine.tunnel),
        Deployments::all(root_));
    app_->launch();
  }

  const MakeTunnel makeTunnel_;
  const std::unique_ptr<HttpSession> session_;
  std::unique_ptr<TunnelService> tunnel_;
  const std::string root_;
  std::unique_ptr<QuillmarApp> app_;
};

inline StoredSettings asParent() {
  return {{settings::deviceRole, std::string("parent")}, {settings::region, std::string("australia")}};
}

inline StoredSettings asNewChild() { return {{settings::deviceRole, std::string("child")}}; }

inline StoredSettings asEnrolledChild(const std::string& endpoint = "https://dns.example/d1") {
  return {{settings::deviceRole, std::string("child")},
          {settings::childIsEnrolled, true},
          {settings::childDeviceID, std::string("device-1234567890")},
          {settings::childDohEndpoint, endpoint},
          {settings::apiBaseURL, std::string(TestApplication::serviceRoot)}};
}

}  // namespace quillmar
