#pragma once

#include <vector>

#include "platform/haptics.h"

namespace quillmar {

class FakeHaptics final : public Haptics {
 public:
  std::vector<HapticFeedback> played;

  void play(HapticFeedback feedback) override { played.push_back(feedback); }
};

}  // namespace quillmar
