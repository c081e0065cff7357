#pragma once

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <functional>
#include <string_view>
#include <vector>

namespace quillmar::bench {

using Seconds = std::chrono::duration<double>;

// The processor time of the process or of the calling thread.
inline Seconds cpuTime(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// How often the threads of the process have waited for something.
inline long waits() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_nvcsw;
}

inline Seconds median(std::vector<Seconds> times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::ranges::nth_element(times, middle);
  return *middle;
}

// The median processor time of each candidate. The candidates alternate, so that changes of the machine's
// speed affect all of them. The first round is a warm-up and not counted.
inline std::vector<Seconds> race(int rounds, const std::vector<std::function<void()>>& candidates) {
  std::vector<std::vector<Seconds>> times(candidates.size());
  for (int round = 0; round <= rounds; ++round) {
    for (std::size_t i = 0; i < candidates.size(); ++i) {
      const auto start = cpuTime(CLOCK_PROCESS_CPUTIME_ID);
      candidates[i]();
      if (round > 0) {
        times[i].push_back(cpuTime(CLOCK_PROCESS_CPUTIME_ID) - start);
      }
    }
  }
  std::vector<Seconds> medians;
  for (auto& all : times) {
    medians.push_back(median(std::move(all)));
  }
  return medians;
}

}  // namespace quillmar::bench
