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

// Queues, timers and the clock in virtual time. Everything runs on the thread that made it, inside `settle`
// and `advance` and nowhere else, in the order of due times and then of posting. Time stands still but in
// `advance` and `jump`. Tasks may be posted from any thread; everything else belongs to the thread that made
// it.
class VirtualDispatch final : public Dispatch {
 public:
  // 8 October 2016, 22:31:00 UTC.
  static constexpr Date defaultStart{std::chrono::sys_days{std::chrono::October / 8 / 2016} +
                                     std::chrono::hours{22} + std::chrono::minutes{31}};

  explicit VirtualDispatch(Date start = defaultStart);
  ~VirtualDispatch() override;

  Date now() const override;
  // False while a task of a background queue runs, as it would be on a thread of its own.
  bool isMainThread() const override;
  DispatchQueue& main() override;
  DispatchQueue& global(QualityOfService quality) override;
  std::shared_ptr<DispatchQueue> makeSerialQueue(std::string_view label) override;
  [[nodiscard]] std::unique_ptr<Timer> scheduleRepeating(Duration period, Task task) override;

  // Runs what is due, and what that makes due, until nothing is left to do now. Waits in real time for
  // external work that is under way; false when that took longer than the patience.
  bool settle();
  // Moves time on, through each task and timer on the way when its time comes, settling before each step.
  bool advance(Duration duration);
  // Time passes while nothing runs, as in a suspended process; what fell due in it is run late, by the next
  // `settle`.
  void jump(Duration duration);

  // Settles until `predicate` holds, waiting for posts of other threads; false when the patience ended first.
  bool settleUntil(const std::function<bool()>& predicate);
  // The same, moving time on to the next task or timer whenever nothing is left to do now.
  bool advanceUntil(const std::function<bool()>& predicate);
  // Blocks until something is ready to run; false when the patience ended first.
  bool waitForWork();

  bool hasReadyWork() const;
  // When the next task or timer falls due; far in the future when there is none.
  Date nextDue() const;

  // Keeps `settle` and `advance` waiting for as long as the token is held: work of another thread is under
  // way that will post here. May be taken and given back on any thread.
  [[nodiscard]] std::shared_ptr<void> beginExternalWork();
  // The longest real time for which `settle`, `advance` and the waits stand still. 20 s at first.
  void setPatience(std::chrono::milliseconds patience) { patience_ = patience; }

  // Drops everything that is still to run, and whatever is posted from then on.
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
  Clock::time_point deadline() const { return Clock::now() + patience_; }
  bool settleBy(Clock::time_point deadline);

  const std::thread::id driver_ = std::this_thread::get_id();
  bool inBackground_ = false;
  bool running_ = false;
  std::chrono::milliseconds patience_ = std::chrono::seconds(20);
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
