#pragma once

#include <functional>
#include <memory>

#include "app/session/environment.h"
#include "foundation/signal.h"

namespace quillmar {

// Updates texts that depend on the current time ("5 min ago"). While the screen is up and its window is in
// use, the reaction runs every second, and at once when the window comes back into use. A window that is not
// in use causes no wake-ups. Main thread only.
class PassingTime {
 public:
  PassingTime(Environment& environment, std::function<void()> reaction);

  // Called when the screen appears and disappears. Idempotent.
  void start();
  void stop();

 private:
  void followScene(ScenePhase phase);

  Dispatch& dispatch_;
  const Scene& scene_;
  const std::function<void()> reaction_;
  bool isStarted_ = false;
  std::unique_ptr<Timer> timer_;
  Subscription sceneReaction_;
};

}  // namespace quillmar
