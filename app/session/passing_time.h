#pragma once

#include <functional>
#include <memory>

#include "app/session/environment.h"
#include "foundation/signal.h"

namespace quillmar {

// For texts that count from the present ("5 min ago"): they change though nothing announces it. Runs its
// reaction every second while its screen is up in a window that is in use, and at once when such a window
// comes back into use. A window out of sight is never woken. Main thread only.
class PassingTime {
 public:
  PassingTime(Environment& environment, std::function<void()> reaction);

  // The screen comes up, and goes. Idempotent.
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
