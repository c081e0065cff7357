#pragma once

#include "platform/haptics.h"

namespace quillmar {

// A computer has nothing that a hand could feel.
class AbsentHaptics final : public Haptics {
 public:
  void play(HapticFeedback /*feedback*/) override {}
};

}  // namespace quillmar
