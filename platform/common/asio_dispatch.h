#pragma once

#include <chrono>
#include <memory>
#include <string_view>

#include "platform/dispatch.h"

namespace quillmar {

// The queues of a program without a window, by Boost.Asio. The main thread is the one that created this and
// calls `run`. Background threads start on demand, up to a small limit. Delays use the monotonic clock, `now`
// the system clock. The destructor waits for running background tasks and drops the rest.
class AsioDispatch final : public Dispatch {
 public:
  AsioDispatch();
  ~AsioDispatch() override;

  // Runs the main queue until `stop`. May be called again.
  void run();
  // Any thread. `run` returns after the current task; the rest stays queued.
  void stop();
  // Waits for the main queue's next task and runs it. False if none came before the deadline.
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
