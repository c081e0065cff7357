#pragma once

namespace quillmar {

enum class HapticFeedback { light, medium, heavy, success, warning, error, selection };

// A short touch under the finger, where the machine can give one. Main thread only.
class Haptics {
 public:
  Haptics() = default;
  Haptics(const Haptics&) = delete;
  Haptics& operator=(const Haptics&) = delete;
  virtual ~Haptics() = default;

  virtual void play(HapticFeedback feedback) = 0;
};

}  // namespace quillmar
