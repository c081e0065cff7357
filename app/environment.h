#pragma once

#include <memory>
#include <vector>

#include "app/scene.h"
#include "client/deployments.h"
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
class ObservableObject;
class RoleManager;
class VPNDNSManager;

// The one instance of each long-lived object of an application, and the platform under it. Every screen
// reaches them here; nothing is global, so that two applications in one process never see each other. Each
// object is made when it is first asked for, and lives as long as the environment. Main thread only.
class Environment {
 public:
  Environment(const Platform& platform, Deployments deployments);
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment();

  const Platform& platform() const { return platform_; }
  DateStyles dateStyles() const;
  Scene& scene() { return scene_; }

  const std::shared_ptr<NetworkService>& networkService();
  const std::shared_ptr<RoleManager>& roleManager();
  const std::shared_ptr<AuthState>& authState();
  const std::shared_ptr<ChildAppState>& childAppState();
  const std::shared_ptr<AppearanceManager>& appearanceManager();
  const std::shared_ptr<VPNDNSManager>& vpnManager();
  const std::shared_ptr<BackgroundService>& backgroundService();
  const std::shared_ptr<KeychainService>& keychainService();
  const std::shared_ptr<BiometricAuthManager>& biometricAuthManager();

  // Those of the observable ones that exist by now; asking makes none.
  std::vector<std::shared_ptr<ObservableObject>> madeObjects() const;

 private:
  const Platform platform_;
  Scene scene_;
  std::shared_ptr<NetworkService> networkService_;
  std::shared_ptr<RoleManager> roleManager_;
  std::shared_ptr<AuthState> authState_;
  std::shared_ptr<ChildAppState> childAppState_;
  std::shared_ptr<AppearanceManager> appearanceManager_;
  std::shared_ptr<VPNDNSManager> vpnManager_;
  std::shared_ptr<BackgroundService> backgroundService_;
  std::shared_ptr<KeychainService> keychainService_;
  std::shared_ptr<BiometricAuthManager> biometricAuthManager_;
};

}  // namespace quillmar
