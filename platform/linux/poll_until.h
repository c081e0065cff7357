#pragma once

#include <poll.h>

#include <cerrno>
#include <chrono>
#include <span>

namespace quillmar {

// Sleeps until one of the descriptors has what is asked of it; false when the deadline came first.
inline bool pollUntil(std::span<pollfd> descriptors, std::chrono::steady_clock::time_point deadline) {
  using std::chrono::milliseconds;
  int ready = 0;
  do {
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    ready =
        ::poll(descriptors.data(), descriptors.size(), left.count() > 0 ? static_cast<int>(left.count()) : 0);
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

}  // namespace quillmar
