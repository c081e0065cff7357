#pragma once

#include "platform/port.h"

namespace quillmar {

enum class HapticFeedback { light, medium, heavy, success, warning, error, selection };

// Haptic feedback, if the machine has any. Main thread only.
class Haptics : public Port {
 public:
  virtual void play(HapticFeedback feedback) = 0;
};

}  // namespace quillmar
