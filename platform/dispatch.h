#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "foundation/date.h"
#include "platform/port.h"

namespace quillmar {

using Task = std::function<void()>;

// Runs tasks later, never inside the call that hands them over. `async` and `asyncAfter` may be called from
// any thread.
class DispatchQueue : public Port {
 public:
  virtual void async(Task task) = 0;
  virtual void asyncAfter(Duration delay, Task task) = 0;
};

// A repeating timer of the main queue. Destroying it invalidates it: it never fires again, not even a firing
// that was due already.
class Timer : public Port {
 public:
};

enum class QualityOfService { userInitiated, background };

// The present time, the main queue, background queues and timers of one process.
// - The main queue is first in, first out; its tasks run on the main thread.
// - Global queues run tasks on background threads, in no promised order. A serial queue runs its tasks one
// after
//   another in order; it lives as long as somebody holds it, and its tasks run even if nobody does.
// - A repeating timer fires first after one full period, keeps to its schedule, and merges missed firings
// into one.
//   Timers are made and destroyed on the main thread.
class Dispatch : public Port {
 public:
  virtual Date now() const = 0;
  virtual bool isMainThread() const = 0;
  virtual DispatchQueue& main() = 0;
  virtual DispatchQueue& global(QualityOfService quality) = 0;
  virtual std::shared_ptr<DispatchQueue> makeSerialQueue(std::string_view label) = 0;
  [[nodiscard]] virtual std::unique_ptr<Timer> scheduleRepeating(Duration period, Task task) = 0;
};

}  // namespace quillmar
