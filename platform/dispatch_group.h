#pragma once

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/dispatch.h"

namespace quillmar {

// Counts running work and reports when none is left. Thread-safe. Copies share the count.
class DispatchGroup {
 public:
  void enter() const {
    const std::scoped_lock lock(state_->mutex);
    ++state_->pending;
  }

  // Balances `enter`; a surplus call is ignored.
  void leave() const {
    std::vector<Waiter> ready;
    {
      const std::scoped_lock lock(state_->mutex);
      if (state_->pending == 0 || --state_->pending > 0) {
        return;
      }
      ready.swap(state_->waiters);
    }
    for (auto& [queue, task] : ready) {
      queue->async(std::move(task));
    }
  }

  // Posts `task` to `queue` when the count is zero, which may be now. The queue must outlive the group's
  // work.
  void notify(DispatchQueue& queue, Task task) const {
    {
      const std::scoped_lock lock(state_->mutex);
      if (state_->pending > 0) {
        state_->waiters.emplace_back(&queue, std::move(task));
        return;
      }
    }
    queue.async(std::move(task));
  }

 private:
  using Waiter = std::pair<DispatchQueue*, Task>;
  struct State {
    std::mutex mutex;
    int pending = 0;
    std::vector<Waiter> waiters;
  };
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace quillmar
