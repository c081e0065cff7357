#include "testing/virtual_dispatch.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace quillmar {

class VirtualDispatch::Queue final : public DispatchQueue {
 public:
  Queue(VirtualDispatch& dispatch, bool isMain) : dispatch_(dispatch), isMain_(isMain) {}

  void async(Task task) override { dispatch_.post(Duration::zero(), isMain_, std::move(task)); }
  void asyncAfter(Duration delay, Task task) override { dispatch_.post(delay, isMain_, std::move(task)); }

 private:
  VirtualDispatch& dispatch_;
  const bool isMain_;
};

struct VirtualDispatch::Firing {
  Date scheduled;
  Duration period;
  Task task;
};

class VirtualDispatch::RepeatingTimer final : public Timer {
 public:
  explicit RepeatingTimer(std::shared_ptr<Firing> firing) : firing_(std::move(firing)) {}

 private:
  std::shared_ptr<Firing> firing_;
};

VirtualDispatch::VirtualDispatch(Date start)
    : main_(std::make_unique<Queue>(*this, true)),
      global_(std::make_unique<Queue>(*this, false)),
      now_(start) {}

VirtualDispatch::~VirtualDispatch() { close(); }

Date VirtualDispatch::now() const {
  const std::scoped_lock lock(mutex_);
  return now_;
}

bool VirtualDispatch::isMainThread() const { return std::this_thread::get_id() == driver_ && !inBackground_; }

DispatchQueue& VirtualDispatch::main() { return *main_; }

DispatchQueue& VirtualDispatch::global(QualityOfService) { return *global_; }

// One thread runs everything in the order of posting, so every queue is a serial one.
std::shared_ptr<DispatchQueue> VirtualDispatch::makeSerialQueue(std::string_view) {
  return std::make_shared<Queue>(*this, false);
}

std::unique_ptr<Timer> VirtualDispatch::scheduleRepeating(Duration period, Task task) {
  const Duration atLeastATick = std::max(period, Duration(1));
  auto firing = std::make_shared<Firing>(Firing{now() + atLeastATick, atLeastATick, std::move(task)});
  arm(firing, firing->scheduled);
  return std::make_unique<RepeatingTimer>(std::move(firing));
}

void VirtualDispatch::arm(const std::shared_ptr<Firing>& firing, Date due) {
  firing->scheduled = due;
  postAt(due, true, [this, known = std::weak_ptr(firing)] {
    const auto valid = known.lock();
    if (!valid) {
      return;
    }
    const auto missed = (now() - valid->scheduled) / valid->period;
    arm(valid, valid->scheduled + (missed + 1) * valid->period);
    valid->task();
  });
}

bool VirtualDispatch::settle() { return settleBy(deadline()); }

bool VirtualDispatch::settleBy(Clock::time_point deadline) {
  while (true) {
    while (runNext()) {
    }
    std::unique_lock lock(mutex_);
    if (!changed_.wait_until(lock, deadline, [this] { return isReady() || externalWork_ == 0; })) {
      return false;
    }
    if (!isReady()) {
      return true;
    }
  }
}

bool VirtualDispatch::advance(Duration duration) {
  const Date target = now() + duration;
  while (true) {
    if (!settle()) {
      return false;
    }
    const Date next = nextDue();
    const std::scoped_lock lock(mutex_);
    if (next > target) {
      now_ = std::max(now_, target);
      return true;
    }
    now_ = std::max(now_, next);
  }
}

void VirtualDispatch::jump(Duration duration) {
  const std::scoped_lock lock(mutex_);
  now_ += duration;
}

bool VirtualDispatch::settleUntil(const std::function<bool()>& predicate) {
  const auto end = deadline();
  while (true) {
    while (runNext()) {
    }
    if (predicate()) {
      return true;
    }
    std::unique_lock lock(mutex_);
    if (!changed_.wait_until(lock, end, [this] { return isReady(); })) {
      return false;
    }
  }
}

bool VirtualDispatch::advanceUntil(const std::function<bool()>& predicate) {
  while (true) {
    settle();
    if (predicate()) {
      return true;
    }
    if (nextDue() == Date::max() && !waitForWork()) {
      return false;
    }
    jump(std::max(nextDue() - now(), Duration::zero()));
  }
}

bool VirtualDispatch::waitForWork() {
  std::unique_lock lock(mutex_);
  return changed_.wait_until(lock, deadline(), [this] { return isReady(); });
}

bool VirtualDispatch::hasReadyWork() const {
  const std::scoped_lock lock(mutex_);
  return isReady();
}

Date VirtualDispatch::nextDue() const {
  const std::scoped_lock lock(mutex_);
  return entries_.empty() ? Date::max() : entries_.front().due;
}

std::shared_ptr<void> VirtualDispatch::beginExternalWork() {
  {
    const std::scoped_lock lock(mutex_);
    ++externalWork_;
  }
  return {this, [](VirtualDispatch* dispatch) {
            const std::scoped_lock lock(dispatch->mutex_);
            --dispatch->externalWork_;
            dispatch->changed_.notify_all();
          }};
}

void VirtualDispatch::close() {
  std::vector<Entry> dropped;
  {
    const std::scoped_lock lock(mutex_);
    closed_ = true;
    dropped.swap(entries_);
  }
}

void VirtualDispatch::post(Duration delay, bool onMain, Task task) {
  postAt(now() + std::max(delay, Duration::zero()), onMain, std::move(task));
}

void VirtualDispatch::postAt(Date due, bool onMain, Task task) {
  const std::scoped_lock lock(mutex_);
  if (closed_) {
    return;
  }
  entries_.push_back({due, nextOrder_++, onMain, std::move(task)});
  std::ranges::push_heap(entries_, Later{});
  changed_.notify_all();
}

bool VirtualDispatch::isReady() const { return !entries_.empty() && entries_.front().due <= now_; }

bool VirtualDispatch::runNext() {
  Entry entry;
  {
    const std::scoped_lock lock(mutex_);
    if (!isReady()) {
      return false;
    }
    std::ranges::pop_heap(entries_, Later{});
    entry = std::move(entries_.back());
    entries_.pop_back();
  }
  run(std::move(entry));
  return true;
}

void VirtualDispatch::run(Entry entry) {
  assert(std::this_thread::get_id() == driver_ && !running_);
  running_ = true;
  inBackground_ = !entry.onMain;
  entry.task();
  entry.task = nullptr;  // What the closure held goes on the thread that ran it.
  inBackground_ = false;
  running_ = false;
}

}  // namespace quillmar
