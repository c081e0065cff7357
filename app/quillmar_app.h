#pragma once

#include <memory>

#include "app/content_view.h"
#include "app/environment.h"
#include "client/deployments.h"
#include "platform/platform.h"

namespace quillmar {

enum class ScenePhase { active, inactive, background };

template <>
inline constexpr std::array rawNames<ScenePhase> = rawCases<ScenePhase>({{ScenePhase::active, "active"},
                                                                         {ScenePhase::inactive, "inactive"},
                                                                         {ScenePhase::background,
                                                                          "background"}});

// The platform's process-level callbacks. Both references are empty until the root has appeared.
class AppDelegate {
 public:
  std::weak_ptr<ChildAppState> childAppState;
  std::weak_ptr<RoleManager> roleManager;

  bool applicationDidFinishLaunching() { return true; }
  // Starts the background work of an enrolled child's device, and of no other.
  void applicationDidBecomeActive(Environment& environment);
  void applicationWillResignActive() {}
  void applicationDidEnterBackground() {}
  void applicationWillEnterForeground() {}
};

// The application: owns the state objects and the root, and reacts to turning active. Main thread only.
class QuillmarApp {
 public:
  QuillmarApp(const Platform& platform, Deployments deployments);

  // Builds the scene and puts the root up. Once.
  void launch();

  void setScenePhase(ScenePhase phase);
  ScenePhase scenePhase() const { return scenePhase_; }
  void applicationDidBecomeActive() { appDelegate_.applicationDidBecomeActive(environment_); }

  Environment& environment() { return environment_; }
  // Only after `launch`.
  ContentView& contentView() { return *contentView_; }
  AppDelegate& appDelegate() { return appDelegate_; }

 private:
  void rootDidAppear();

  Environment environment_;
  AppDelegate appDelegate_;
  ScenePhase scenePhase_ = ScenePhase::background;
  std::unique_ptr<ContentView> contentView_;
};

}  // namespace quillmar
