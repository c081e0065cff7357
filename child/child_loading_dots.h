#pragma once

#include <chrono>
#include <memory>
#include <vector>

#include "foundation/observable.h"
#include "platform/dispatch.h"

namespace quillmar {

// Three dots, one of them bright.
class ChildLoadingDots final : public ObservableObject {
 public:
  static constexpr int dots = 3;
  static constexpr std::chrono::milliseconds period{300};

  explicit ChildLoadingDots(Dispatch& dispatch)
      : ObservableObject("ChildLoadingDots"),
        timer_(dispatch.scheduleRepeating(
            period, weakly([this] { animationPhase = (animationPhase() + 1) % dots; }))) {}

  Published<int> animationPhase{*this, "animationPhase", 0};
  Derived<std::vector<double>> opacities{*this, "opacities", [this] {
                                           std::vector<double> all(dots, 0.3);
                                           all[static_cast<std::size_t>(animationPhase())] = 1.0;
                                           return all;
                                         }};

 private:
  std::unique_ptr<Timer> timer_;
};

}  // namespace quillmar
