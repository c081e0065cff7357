#pragma once

#include "platform/haptics.h"

namespace quillmar {

// A computer has no haptics.
class AbsentHaptics final : public Haptics {
 public:
  void play(HapticFeedback /*feedback*/) override {}
};

}  // namespace quillmar
