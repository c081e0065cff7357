#pragma once

#include <poll.h>

#include <cerrno>
#include <chrono>
#include <span>

namespace quillmar {

// Waits until a descriptor has one of its requested events. False if the deadline comes first.
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
