#include "app/quillmar_app.h"

#include <utility>

#include "app/session/appearance_manager.h"
#include "app/session/role_manager.h"
#include "child/background_service.h"
#include "child/child_app_state.h"
#include "identity/auth_state.h"

namespace quillmar {

void AppDelegate::applicationDidBecomeActive(Environment& environment) {
  const auto role = roleManager.lock();
  if (!role || role->currentRole() != DeviceRole::child) {
    return;
  }
  const auto child = childAppState.lock();
  if (!child || !child->isEnrolled()) {
    return;
  }
  environment.backgroundService()->start(child);
}

QuillmarApp::QuillmarApp(const Platform& platform, Deployments deployments)
    : environment_(platform, std::move(deployments)) {
  platform.windowStyle.setBarAppearance(barAppearance());
}

void QuillmarApp::launch() {
  appDelegate_.applicationDidFinishLaunching();
  contentView_ = std::make_unique<ContentView>(environment_);
  contentView_->appear();
  rootDidAppear();
}

void QuillmarApp::rootDidAppear() {
  appDelegate_.childAppState = environment_.childAppState();
  appDelegate_.roleManager = environment_.roleManager();
}

void QuillmarApp::setScenePhase(ScenePhase phase) {
  if (environment_.scene().setPhase(phase) && phase == ScenePhase::active) {
    environment_.authState()->refreshTokenIfNeeded();
  }
}

}  // namespace quillmar
