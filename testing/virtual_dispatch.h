#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/dispatch.h"

namespace quillmar {

// Queues, timers and the clock in virtual time. Tasks run only inside `settle` and `advance`, on the thread
// that created this, ordered by due time and then by posting. Time changes only in `advance` and `jump`.
// Posting is thread-safe; everything else belongs to that thread.
class VirtualDispatch final : public Dispatch {
 public:
  // 8 October 2016, 22:31:00 UTC.
  static constexpr Date defaultStart{std::chrono::sys_days{std::chrono::October / 8 / 2016} +
                                     std::chrono::hours{22} + std::chrono::minutes{31}};

  explicit VirtualDispatch(Date start = defaultStart);
  ~VirtualDispatch() override;

  Date now() const override;
  // False while a task of a background queue runs.
  bool isMainThread() const override;
  DispatchQueue& main() override;
  DispatchQueue& global(QualityOfService quality) override;
  std::shared_ptr<DispatchQueue> makeSerialQueue(std::string_view label) override;
  [[nodiscard]] std::unique_ptr<Timer> scheduleRepeating(Duration period, Task task) override;

  // Runs due tasks, including those that they post, until none is left. Waits in real time for external work;
  // false after the timeout.
  bool settle();
  // Moves time forward, stopping at each task and timer that falls due, and settles at every stop.
  bool advance(Duration duration);
  // Moves time forward without running anything, as in a suspended process. The next `settle` runs what fell
  // due, late.
  void jump(Duration duration);

  // Settles until `predicate` returns true; waits for posts of other threads. False after the timeout.
  bool settleUntil(const std::function<bool()>& predicate);
  // The same, but moves time to the next task or timer whenever nothing is due.
  bool advanceUntil(const std::function<bool()>& predicate);
  // Blocks until a task is due. False after the timeout.
  bool waitForWork();

  bool hasReadyWork() const;
  // The due time of the next task or timer; far in the future if there is none.
  Date nextDue() const;

  // `settle` and `advance` wait while the returned token exists: another thread is working and will post
  // here. Thread-safe.
  [[nodiscard]] std::shared_ptr<void> beginExternalWork();
  // The real-time limit of `settle`, `advance` and the waits; 20 s by default.
  void setTimeout(std::chrono::milliseconds timeout) { timeout_ = timeout; }

  // Drops all tasks, and those that are posted later.
  void close();

 private:
  class Queue;
  class RepeatingTimer;
  struct Firing;

  struct Entry {
    Date due;
    std::uint64_t order = 0;
    bool onMain = false;
    Task task;
  };
  struct Later {
    bool operator()(const Entry& one, const Entry& other) const {
      return one.due != other.due ? one.due > other.due : one.order > other.order;
    }
  };
  using Clock = std::chrono::steady_clock;

  void post(Duration delay, bool onMain, Task task);
  void postAt(Date due, bool onMain, Task task);
  void arm(const std::shared_ptr<Firing>& firing, Date due);
  bool isReady() const;
  bool runNext();
  void run(Entry entry);
  Clock::time_point deadline() const { return Clock::now() + timeout_; }
  bool settleBy(Clock::time_point deadline);

  const std::thread::id driver_ = std::this_thread::get_id();
  bool inBackground_ = false;
  bool running_ = false;
  std::chrono::milliseconds timeout_ = std::chrono::seconds(20);
  std::unique_ptr<Queue> main_;
  std::unique_ptr<Queue> global_;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  Date now_;
  std::uint64_t nextOrder_ = 0;
  std::size_t externalWork_ = 0;
  bool closed_ = false;
  std::vector<Entry> entries_;
};

}  // namespace quillmar
