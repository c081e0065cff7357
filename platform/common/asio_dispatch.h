#pragma once

#include <chrono>
#include <memory>
#include <string_view>

#include "platform/dispatch.h"

namespace quillmar {

// The queues of a program without a window, by Boost.Asio. The main thread is the one that made this and
// calls `run`. Background threads start when they are first needed, never more than a few. Delays are
// measured by the monotonic clock, `now` by the system's. Destroying it waits for background tasks that run
// at that moment and drops the rest.
class AsioDispatch final : public Dispatch {
 public:
  AsioDispatch();
  ~AsioDispatch() override;

  // Runs the main queue until `stop`; may be called again after it.
  void run();
  // Any thread. `run` returns after the task at hand; what is left in the queue stays there.
  void stop();
  // Waits for the next task of the main queue and runs it; false when there was none up to the deadline.
  bool runOne(std::chrono::steady_clock::time_point deadline);

  Date now() const override;
  bool isMainThread() const override;
  DispatchQueue& main() override;
  DispatchQueue& global(QualityOfService quality) override;
  std::shared_ptr<DispatchQueue> makeSerialQueue(std::string_view label) override;
  [[nodiscard]] std::unique_ptr<Timer> scheduleRepeating(Duration period, Task task) override;

 private:
  struct Loops;
  std::unique_ptr<Loops> loops_;
};

}  // namespace quillmar
