#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/log.h"

namespace quillmar {

class RecordingLog final : public Log {
 public:
  void print(std::string_view line) override {
    const std::scoped_lock lock(mutex_);
    printed_.emplace_back(line);
  }

  void system(std::string_view line) override {
    const std::scoped_lock lock(mutex_);
    system_.emplace_back(line);
  }

  // The lines of the standard output and those of the system's log, in order.
  std::vector<std::string> printed() const {
    const std::scoped_lock lock(mutex_);
    return printed_;
  }
  std::vector<std::string> systemLines() const {
    const std::scoped_lock lock(mutex_);
    return system_;
  }
  bool hasPrinted(std::string_view line) const { return countPrinted(line) > 0; }
  std::ptrdiff_t countPrinted(std::string_view line) const {
    const std::scoped_lock lock(mutex_);
    return std::ranges::count(printed_, line);
  }
  void clear() {
    const std::scoped_lock lock(mutex_);
    printed_.clear();
    system_.clear();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> printed_;
  std::vector<std::string> system_;
};

}  // namespace quillmar
