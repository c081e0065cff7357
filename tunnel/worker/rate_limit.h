#pragma once

#include <algorithm>

#include "tunnel/resolver/time.h"

namespace quillmar::tunnel {

// So many at once, and then one each time that so much has passed.
class RateLimit {
 public:
  RateLimit(int most, BootClock::duration each) : each_(each), full_(most * each) {}

  // Whether there is one left, which is taken.
  bool take(Time now) {
    // Kept as the time at which everything is there again.
    const auto full = std::max(isFullAt_, now) + each_;
    const bool isLeft = full - now <= full_;
    isFullAt_ = isLeft ? full : isFullAt_;
    return isLeft;
  }

 private:
  BootClock::duration each_;
  BootClock::duration full_;
  Time isFullAt_{};
};

}  // namespace quillmar::tunnel
