#pragma once

#include <chrono>

namespace quillmar::tunnel {

// Time that goes on while the machine sleeps: an answer does not get younger over night. Whoever decides by
// it is told the time, only programs look at the clock.
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
