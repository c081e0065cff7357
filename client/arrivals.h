#pragma once

#include <mutex>
#include <utility>
#include <vector>

namespace quillmar {

// Collects what several threads add, in the order of arrival. Thread-safe.
template <class T>
class Arrivals {
 public:
  void add(T arrival) {
    const std::scoped_lock lock(mutex_);
    arrivals_.push_back(std::move(arrival));
  }

  std::vector<T> take() {
    const std::scoped_lock lock(mutex_);
    return std::exchange(arrivals_, {});
  }

 private:
  std::mutex mutex_;
  std::vector<T> arrivals_;
};

}  // namespace quillmar
