#include "ui/adapters/qt_dispatch.h"

#include <QPointer>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <deque>
#include <mutex>
#include <utility>

namespace quillmar::ui {
namespace {

using std::chrono::steady_clock;

Duration untilOrNow(steady_clock::time_point due) {
  return std::max(std::chrono::ceil<Duration>(due - steady_clock::now()), Duration::zero());
}

// Runs `task` on the event loop of `receiver` at `due`; dropped if `receiver` is destroyed. Any thread may
// call this.
void runAt(QObject& receiver, steady_clock::time_point due, Task task) {
  QMetaObject::invokeMethod(
      &receiver,
      [&receiver, due, task = std::move(task)]() mutable {
        QTimer::singleShot(untilOrNow(due), Qt::PreciseTimer, &receiver, std::move(task));
      },
      Qt::QueuedConnection);
}

// Fires at whole periods after its start. A late firing does not shift the next one, and a missed one is
// skipped.
class RepeatingTimer final : public Timer {
 public:
  RepeatingTimer(Duration period, Task task)
      : period_(std::max(period, Duration(1))), due_(steady_clock::now() + period_), task_(std::move(task)) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { fire(); });
    timer_.start(untilOrNow(due_));
  }

 private:
  void fire() {
    const auto now = steady_clock::now();
    if (now >= due_) {
      due_ += period_ * ((now - due_) / period_ + 1);
    }
    timer_.start(untilOrNow(due_));
    // The task may destroy this timer.
    const Task task = task_;
    task();
  }

  Duration period_;
  steady_clock::time_point due_;
  Task task_;
  QTimer timer_;
};

}  // namespace

class QtDispatch::LoopQueue final : public DispatchQueue {
 public:
  explicit LoopQueue(QObject& loop) : loop_(loop) {}

  void async(Task task) override { QMetaObject::invokeMethod(&loop_, std::move(task), Qt::QueuedConnection); }
  void asyncAfter(Duration delay, Task task) override {
    runAt(loop_, steady_clock::now() + delay, std::move(task));
  }

 private:
  QObject& loop_;
};

class QtDispatch::PoolQueue final : public DispatchQueue {
 public:
  PoolQueue(QThreadPool& pool, QObject& clock, int priority)
      : pool_(pool), clock_(clock), priority_(priority) {}

  void async(Task task) override { pool_.start(std::move(task), priority_); }
  void asyncAfter(Duration delay, Task task) override {
    runAt(clock_, steady_clock::now() + delay,
          [this, task = std::move(task)]() mutable { async(std::move(task)); });
  }

 private:
  QThreadPool& pool_;
  QObject& clock_;
  int priority_;
};

// Runs one task at a time.
class QtDispatch::SerialQueue final : public DispatchQueue, public std::enable_shared_from_this<SerialQueue> {
 public:
  SerialQueue(DispatchQueue& workers, QObject& clock) : workers_(workers), clock_(clock) {}

  void async(Task task) override {
    const std::scoped_lock lock(mutex_);
    waiting_.push_back(std::move(task));
    if (!std::exchange(running_, true)) {
      runNextOnPool();
    }
  }

  void asyncAfter(Duration delay, Task task) override {
    runAt(clock_, steady_clock::now() + delay,
          [self = shared_from_this(), task = std::move(task)]() mutable { self->async(std::move(task)); });
  }

 private:
  void runNextOnPool() {
    workers_.async([self = shared_from_this()] { self->runNext(); });
  }

  void runNext() {
    Task task;
    {
      const std::scoped_lock lock(mutex_);
      task = std::move(waiting_.front());
      waiting_.pop_front();
    }
    task();
    const std::scoped_lock lock(mutex_);
    running_ = !waiting_.empty();
    if (running_) {
      runNextOnPool();
    }
  }

  DispatchQueue& workers_;
  QObject& clock_;
  std::mutex mutex_;
  std::deque<Task> waiting_;
  bool running_ = false;
};

QtDispatch::QtDispatch()
    : clockLoop_(std::make_unique<QObject>()), main_(std::make_unique<LoopQueue>(mainLoop_)) {
  constexpr int fewestThreads = 4;
  pool_.setMaxThreadCount(std::max(QThread::idealThreadCount(), fewestThreads));
  userInitiated_ = std::make_unique<PoolQueue>(pool_, *clockLoop_, 1);
  background_ = std::make_unique<PoolQueue>(pool_, *clockLoop_, 0);
  clockLoop_->moveToThread(&clockThread_);
  clockThread_.start();
}

QtDispatch::~QtDispatch() {
  clockThread_.quit();
  clockThread_.wait();
  pool_.clear();
  // A task that still runs may post a delayed task, which then never runs.
  pool_.waitForDone();
  clockLoop_.reset();
}

Date QtDispatch::now() const { return std::chrono::floor<Duration>(std::chrono::system_clock::now()); }

bool QtDispatch::isMainThread() const { return QThread::currentThread() == mainLoop_.thread(); }

DispatchQueue& QtDispatch::main() { return *main_; }

DispatchQueue& QtDispatch::global(QualityOfService quality) {
  return quality == QualityOfService::userInitiated ? *userInitiated_ : *background_;
}

std::shared_ptr<DispatchQueue> QtDispatch::makeSerialQueue(std::string_view /*label*/) {
  return std::make_shared<SerialQueue>(*userInitiated_, *clockLoop_);
}

std::unique_ptr<Timer> QtDispatch::scheduleRepeating(Duration period, Task task) {
  return std::make_unique<RepeatingTimer>(period, std::move(task));
}

}  // namespace quillmar::ui
