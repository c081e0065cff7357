#include "app/application_environment.h"

#include <utility>

#include "app/session/appearance_manager.h"
#include "app/session/role_manager.h"
#include "child/background_service.h"
#include "child/child_app_state.h"
#include "child/vpn_dns_manager.h"
#include "client/network_service.h"
#include "identity/auth_state.h"
#include "identity/biometric_auth_manager.h"
#include "identity/keychain_service.h"

namespace quillmar {
namespace {

template <class T, class... Args>
const std::shared_ptr<T>& madeOnce(std::shared_ptr<T>& object, Args&&... args) {
  if (!object) {
    object = std::make_shared<T>(std::forward<Args>(args)...);
  }
  return object;
}

}  // namespace

ApplicationEnvironment::ApplicationEnvironment(const Platform& platform, Deployments deployments)
    : Environment(platform),
      networkService_(NetworkService::make(platform.http, platform.settings, platform.log, platform.dispatch,
                                           std::move(deployments))) {}

ApplicationEnvironment::~ApplicationEnvironment() = default;

const std::shared_ptr<NetworkService>& ApplicationEnvironment::networkService() { return networkService_; }

const std::shared_ptr<RoleManager>& ApplicationEnvironment::roleManager() {
  return madeOnce(roleManager_, platform().settings);
}

const std::shared_ptr<AuthState>& ApplicationEnvironment::authState() {
  return madeOnce(authState_, platform().settings, platform().dispatch, platform().log, networkService_);
}

const std::shared_ptr<ChildAppState>& ApplicationEnvironment::childAppState() {
  return madeOnce(childAppState_, platform().settings, platform().dispatch);
}

const std::shared_ptr<AppearanceManager>& ApplicationEnvironment::appearanceManager() {
  return madeOnce(appearanceManager_, platform().settings, platform().windowStyle);
}

const std::shared_ptr<VPNDNSManager>& ApplicationEnvironment::vpnManager() {
  return madeOnce(vpnManager_, platform().tunnel, platform().dispatch, platform().log);
}

const std::shared_ptr<BackgroundService>& ApplicationEnvironment::backgroundService() {
  return madeOnce(backgroundService_, platform().dispatch, platform().log, networkService_, vpnManager());
}

const std::shared_ptr<KeychainService>& ApplicationEnvironment::keychainService() {
  return madeOnce(keychainService_, platform().secureItems);
}

const std::shared_ptr<BiometricAuthManager>& ApplicationEnvironment::biometricAuthManager() {
  return madeOnce(biometricAuthManager_, platform().biometrics, platform().dispatch, *keychainService());
}

std::vector<std::shared_ptr<ObservableObject>> ApplicationEnvironment::madeObjects() const {
  std::vector<std::shared_ptr<ObservableObject>> made{roleManager_,         authState_,  childAppState_,
                                                      appearanceManager_,   vpnManager_, backgroundService_,
                                                      biometricAuthManager_};
  std::erase(made, nullptr);
  return made;
}

}  // namespace quillmar
