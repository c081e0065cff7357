#pragma once

#include <memory>

#include "app/application_environment.h"
#include "app/content_view.h"
#include "app/session/scene.h"
#include "client/deployments.h"
#include "platform/platform.h"

namespace quillmar {

// The platform's process callbacks. Both references are empty until the root has appeared.
class AppDelegate {
 public:
  std::weak_ptr<ChildAppState> childAppState;
  std::weak_ptr<RoleManager> roleManager;

  bool applicationDidFinishLaunching() { return true; }
  // Starts the background work if this is an enrolled child's device.
  void applicationDidBecomeActive(Environment& environment);
  void applicationWillResignActive() {}
  void applicationDidEnterBackground() {}
  void applicationWillEnterForeground() {}
};

// The application: owns the state objects and the root, and handles activation. Main thread only.
class QuillmarApp {
 public:
  QuillmarApp(const Platform& platform, Deployments deployments);

  // Builds the scene and shows the root. Call it once.
  void launch();

  void setScenePhase(ScenePhase phase);
  void applicationDidBecomeActive() { appDelegate_.applicationDidBecomeActive(environment_); }

  ApplicationEnvironment& environment() { return environment_; }
  // Only after `launch`.
  ContentView& contentView() { return *contentView_; }
  AppDelegate& appDelegate() { return appDelegate_; }

 private:
  void rootDidAppear();

  ApplicationEnvironment environment_;
  AppDelegate appDelegate_;
  std::unique_ptr<ContentView> contentView_;
};

}  // namespace quillmar
