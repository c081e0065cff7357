#pragma once

#include <memory>
#include <vector>

#include "app/session/environment.h"
#include "client/deployments.h"

namespace quillmar {

class ObservableObject;

// Creates the objects of a whole application.
class ApplicationEnvironment final : public Environment {
 public:
  ApplicationEnvironment(const Platform& platform, Deployments deployments);
  ~ApplicationEnvironment() override;

  const std::shared_ptr<NetworkService>& networkService() override;
  const std::shared_ptr<RoleManager>& roleManager() override;
  const std::shared_ptr<AuthState>& authState() override;
  const std::shared_ptr<ChildAppState>& childAppState() override;
  const std::shared_ptr<AppearanceManager>& appearanceManager() override;
  const std::shared_ptr<VPNDNSManager>& vpnManager() override;
  const std::shared_ptr<BackgroundService>& backgroundService() override;
  const std::shared_ptr<KeychainService>& keychainService() override;
  const std::shared_ptr<BiometricAuthManager>& biometricAuthManager() override;

  // The observable objects created so far; creates none.
  std::vector<std::shared_ptr<ObservableObject>> madeObjects() const;

 private:
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
