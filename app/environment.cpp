#include "app/environment.h"

#include <utility>

#include "app/appearance_manager.h"
#include "app/role_manager.h"
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

Environment::Environment(const Platform& platform, Deployments deployments)
    : platform_(platform),
      networkService_(NetworkService::make(platform.http, platform.settings, platform.log, platform.dispatch,
                                           std::move(deployments))) {}

Environment::~Environment() = default;

const std::shared_ptr<NetworkService>& Environment::networkService() { return networkService_; }

const std::shared_ptr<RoleManager>& Environment::roleManager() {
  return madeOnce(roleManager_, platform_.settings);
}

const std::shared_ptr<AuthState>& Environment::authState() {
  return madeOnce(authState_, platform_.settings, platform_.dispatch, platform_.log, networkService_);
}

const std::shared_ptr<ChildAppState>& Environment::childAppState() {
  return madeOnce(childAppState_, platform_.settings, platform_.dispatch);
}

const std::shared_ptr<AppearanceManager>& Environment::appearanceManager() {
  return madeOnce(appearanceManager_, platform_.settings, platform_.windowStyle);
}

const std::shared_ptr<VPNDNSManager>& Environment::vpnManager() {
  return madeOnce(vpnManager_, platform_.tunnel, platform_.dispatch, platform_.log);
}

const std::shared_ptr<BackgroundService>& Environment::backgroundService() {
  return madeOnce(backgroundService_, platform_.dispatch, platform_.log, networkService_, vpnManager());
}

const std::shared_ptr<KeychainService>& Environment::keychainService() {
  return madeOnce(keychainService_, platform_.secureItems);
}

const std::shared_ptr<BiometricAuthManager>& Environment::biometricAuthManager() {
  return madeOnce(biometricAuthManager_, platform_.biometrics, platform_.dispatch, *keychainService());
}

std::vector<std::shared_ptr<ObservableObject>> Environment::madeObjects() const {
  std::vector<std::shared_ptr<ObservableObject>> made{roleManager_,         authState_,  childAppState_,
                                                      appearanceManager_,   vpnManager_, backgroundService_,
                                                      biometricAuthManager_};
  std::erase(made, nullptr);
  return made;
}

}  // namespace quillmar
