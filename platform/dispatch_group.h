#pragma once

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/dispatch.h"

namespace quillmar {

// Counts work under way and tells when none is left. Any thread. Copies stand for the same group.
class DispatchGroup {
 public:
  void enter() const {
    const std::scoped_lock lock(state_->mutex);
    ++state_->pending;
  }

  // Every `enter` needs one; a `leave` too many does nothing.
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

  // Posts `task` to `queue` when nothing is under way; at once if nothing is. The queue must outlive the
  // group's work.
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
