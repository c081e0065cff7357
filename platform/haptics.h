#pragma once

#include "platform/port.h"

namespace quillmar {

enum class HapticFeedback { light, medium, heavy, success, warning, error, selection };

// A short touch under the finger, where the machine can give one. Main thread only.
class Haptics : public Port {
 public:
  virtual void play(HapticFeedback feedback) = 0;
};

}  // namespace quillmar
