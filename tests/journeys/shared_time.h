#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

#include "sandbox/time.h"
#include "testing/virtual_dispatch.h"

namespace quillmar {

// One time for the service and all included machines: they always agree.
class SharedTime {
 public:
  // The clock for the service.
  sandbox::Clock clock() const {
    return [now = now_] { return std::chrono::system_clock::time_point(now->load().time_since_epoch()); };
  }

  // Includes a machine, which must outlive the last use of this time.
  void include(VirtualDispatch& machine) { machines_.push_back(&machine); }

  void settle() {
    for (auto* machine : machines_) {
      EXPECT_TRUE(machine->settle()) << "an answer never came";
    }
  }

  void advance(Duration duration) {
    settle();
    const Date end = now_->load() + duration;
    while (now_->load() < end) {
      const Date next = std::min(end, nextDue());
      *now_ = next;
      for (auto* machine : machines_) {
        EXPECT_TRUE(machine->advance(next - machine->now())) << "an answer never came";
      }
    }
  }

 private:
  Date nextDue() const {
    Date earliest = Date::max();
    for (const auto* machine : machines_) {
      earliest = std::min(earliest, machine->nextDue());
    }
    return earliest;
  }

  const std::shared_ptr<std::atomic<Date>> now_ =
      std::make_shared<std::atomic<Date>>(VirtualDispatch::defaultStart);
  std::vector<VirtualDispatch*> machines_;
};

}  // namespace quillmar
