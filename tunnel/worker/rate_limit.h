#pragma once

#include <algorithm>

#include "tunnel/resolver/time.h"

namespace quillmar::tunnel {

// A token bucket: it holds `most` tokens and gains one each time `each` has passed.
class RateLimit {
 public:
  RateLimit(int most, BootClock::duration each) : each_(each), full_(most * each) {}

  // Takes a token. False if there is none.
  bool take(Time now) {
    // The level is stored as the time at which the bucket is full again.
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
