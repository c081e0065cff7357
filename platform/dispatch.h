#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "foundation/date.h"
#include "platform/port.h"

namespace quillmar {

using Task = std::function<void()>;

// Runs tasks later, never inside the call that posts them. `async` and `asyncAfter` are thread-safe.
class DispatchQueue : public Port {
 public:
  virtual void async(Task task) = 0;
  virtual void asyncAfter(Duration delay, Task task) = 0;
};

// A repeating timer of the main queue. After its destruction it never fires, even if it was due.
class Timer : public Port {
 public:
};

enum class QualityOfService { userInitiated, background };

// The clock, the queues and the timers of a process.
// - The main queue is first in, first out; its tasks run on the main thread.
// - Global queues run tasks on background threads in no particular order. A serial queue runs its tasks one
//   at a time, in order. A serial queue's tasks run even if the queue is no longer held.
// - A repeating timer first fires after one full period, keeps its schedule, and merges missed firings into
//   one. Timers are created and destroyed on the main thread.
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
