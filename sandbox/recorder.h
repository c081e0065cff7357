#pragma once

#include <deque>
#include <mutex>
#include <vector>

#include "sandbox/http/message.h"

namespace quillmar::sandbox {

// The latest requests, for tests and inspection. Thread-safe.
class Recorder {
 public:
  void add(Request request);
  [[nodiscard]] std::vector<Request> all() const;
  void clear();

 private:
  static constexpr std::size_t most = 10'000;

  mutable std::mutex mutex_;
  std::deque<Request> requests_;
};

}  // namespace quillmar::sandbox
