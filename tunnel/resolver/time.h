#pragma once

#include <chrono>

namespace quillmar::tunnel {

// Time that goes on while the machine sleeps (CLOCK_BOOTTIME), since answers expire during sleep too. The
// resolver, the cache and the policy are passed the time; they never call `now`.
struct BootClock {
  using duration = std::chrono::nanoseconds;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = std::chrono::time_point<BootClock>;
  static constexpr bool is_steady = true;

  static time_point now();
};

using Time = BootClock::time_point;

}  // namespace quillmar::tunnel
