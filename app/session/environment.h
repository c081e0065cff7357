#pragma once

#include <memory>

#include "app/session/scene.h"
#include "foundation/date_format.h"
#include "platform/platform.h"

namespace quillmar {

class AppearanceManager;
class AuthState;
class BackgroundService;
class BiometricAuthManager;
class ChildAppState;
class KeychainService;
class NetworkService;
class RoleManager;
class VPNDNSManager;

// The one instance of each long-lived object of an application, and its platform. All screens get them here.
// Nothing is global, so two applications in one process are independent. Each object is created on first use
// and lives as long as the environment. Main thread only.
class Environment {
 public:
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  virtual ~Environment() = default;

  const Platform& platform() const { return platform_; }
  DateStyles dateStyles() const;
  Scene& scene() { return scene_; }

  virtual const std::shared_ptr<NetworkService>& networkService() = 0;
  virtual const std::shared_ptr<RoleManager>& roleManager() = 0;
  virtual const std::shared_ptr<AuthState>& authState() = 0;
  virtual const std::shared_ptr<ChildAppState>& childAppState() = 0;
  virtual const std::shared_ptr<AppearanceManager>& appearanceManager() = 0;
  virtual const std::shared_ptr<VPNDNSManager>& vpnManager() = 0;
  virtual const std::shared_ptr<BackgroundService>& backgroundService() = 0;
  virtual const std::shared_ptr<KeychainService>& keychainService() = 0;
  virtual const std::shared_ptr<BiometricAuthManager>& biometricAuthManager() = 0;

 protected:
  explicit Environment(const Platform& platform) : platform_(platform) {}

 private:
  const Platform platform_;
  Scene scene_;
};

}  // namespace quillmar
