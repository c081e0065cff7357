#pragma once

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/quillmar_app.h"
#include "app/settings_keys.h"
#include "child/background_service.h"
#include "child/child_app_state.h"
#include "child/vpn_dns_manager.h"
#include "identity/auth_state.h"
#include "tests/support/fake_platform.h"

namespace quillmar {

using StoredSettings = std::map<std::string_view, SettingValue>;

// A whole application on a machine of its own.
class TestApplication {
 public:
  static constexpr const char* serviceRoot = "https://au.example";

  explicit TestApplication(const StoredSettings& stored = {}) : TestApplication(stored, nullptr) {}
  // On a session with a real network, and a service of its own.
  TestApplication(const StoredSettings& stored, HttpSession* session, const std::string& root = serviceRoot)
      : session_(session ? *session : machine.http), root_(root) {
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
  Environment& environment() { return app_->environment(); }
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
    app_ = std::make_unique<QuillmarApp>(machine.portsWith(session_), Deployments::all(root_));
    app_->launch();
  }

  HttpSession& session_;
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
