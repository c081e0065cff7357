#include "app/session/passing_time.h"

#include <chrono>
#include <utility>

namespace quillmar {
namespace {

// The finest unit in any text.
constexpr auto period = std::chrono::seconds(1);

}  // namespace

PassingTime::PassingTime(Environment& environment, std::function<void()> reaction)
    : dispatch_(environment.platform().dispatch),
      scene_(environment.scene()),
      reaction_(std::move(reaction)),
      sceneReaction_(environment.scene().onChange([this](ScenePhase phase) { followScene(phase); })) {}

void PassingTime::start() {
  isStarted_ = true;
  if (!timer_ && scene_.isInUse()) {
    timer_ = dispatch_.scheduleRepeating(period, reaction_);
  }
}

void PassingTime::stop() {
  isStarted_ = false;
  timer_.reset();
}

void PassingTime::followScene(ScenePhase phase) {
  if (phase != ScenePhase::active) {
    timer_.reset();
  } else if (isStarted_) {
    reaction_();
    start();
  }
}

}  // namespace quillmar
