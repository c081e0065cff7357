#pragma once

#include <array>
#include <functional>
#include <optional>
#include <utility>

#include "foundation/raw_enum.h"
#include "foundation/signal.h"

namespace quillmar {

enum class ScenePhase { active, inactive, background };

template <>
inline constexpr std::array rawNames<ScenePhase> = rawCases<ScenePhase>({{ScenePhase::active, "active"},
                                                                         {ScenePhase::inactive, "inactive"},
                                                                         {ScenePhase::background,
                                                                          "background"}});

// Whether the application's windows are in use, as the front end reported. Main thread only.
class Scene {
 public:
  // True before the first report: a screen may appear earlier than that.
  bool isInUse() const { return !phase_ || *phase_ == ScenePhase::active; }

  // Returns whether the phase changed.
  bool setPhase(ScenePhase phase) {
    const bool isNews = std::exchange(phase_, phase) != phase;
    if (isNews) {
      changed_.emit(phase);
    }
    return isNews;
  }
  Subscription onChange(std::function<void(ScenePhase)> reaction) {
    return changed_.connect(std::move(reaction));
  }

 private:
  std::optional<ScenePhase> phase_;
  Signal<ScenePhase> changed_;
};

}  // namespace quillmar
