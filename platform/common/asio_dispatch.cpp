#include "platform/common/asio_dispatch.h"

#include <algorithm>
#include <boost/asio/bind_executor.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/common/thread_signals.h"

namespace quillmar {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;

class Context : public asio::io_context {
 public:
  using io_context::io_context;

  // What the tasks hold may belong to this context or to another, all of which must still be there.
  void dropTasks() { shutdown(); }
};

constexpr std::size_t mostThreads = 4;

// Threads for background work: one when the first task comes, another for each task that finds them all busy.
class Pool {
 public:
  // Ends when the tasks that run at this moment have ended.
  void close() {
    context_.stop();
    std::vector<std::thread> threads;
    {
      const std::scoped_lock lock(mutex_);
      closed_ = true;
      threads.swap(threads_);
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
  }

  Context& context() { return context_; }

  // To be called with each task that is handed to the context, and to be held until that is done.
  std::shared_ptr<void> employ() {
    const std::scoped_lock lock(mutex_);
    ++tasks_;
    ensureThreads(std::min(tasks_, mostThreads));
    return {this, [](Pool* pool) {
              const std::scoped_lock lock(pool->mutex_);
              --pool->tasks_;
            }};
  }

  // Timers need somebody who waits for them.
  void ensureThread() {
    const std::scoped_lock lock(mutex_);
    ensureThreads(1);
  }

 private:
  void ensureThreads(std::size_t count) {
    if (threads_.size() < count && !closed_) {
      threads_.emplace_back([this] {
        blockSignalsOfThisThread();
        context_.run();
      });
    }
  }

  std::mutex mutex_;
  std::size_t tasks_ = 0;
  bool closed_ = false;
  Context context_;
  asio::executor_work_guard<Context::executor_type> work_{context_.get_executor()};
  std::vector<std::thread> threads_;
};

// Timers wait in their own closures, so nobody has to keep them.
template <class Executor, class Function>
void runAfter(const Executor& executor, Duration delay, Function function) {
  auto timer = std::make_shared<asio::steady_timer>(executor, delay);
  timer->async_wait([timer, function = std::move(function)](const error_code& error) mutable {
    if (!error) {
      function();
    }
  });
}

class MainQueue final : public DispatchQueue {
 public:
  explicit MainQueue(Context& context) : context_(context) {}

  void async(Task task) override { asio::post(context_, std::move(task)); }
  void asyncAfter(Duration delay, Task task) override {
    if (delay <= Duration::zero()) {
      return async(std::move(task));
    }
    runAfter(context_.get_executor(), delay, std::move(task));
  }

 private:
  Context& context_;
};

// On the pool's threads by way of `Executor`: the context's own, or a strand of it.
template <class Executor>
class BackgroundQueue final : public DispatchQueue {
 public:
  BackgroundQueue(Pool& pool, Executor executor) : pool_(pool), executor_(std::move(executor)) {}

  void async(Task task) override { submit(pool_, executor_, std::move(task)); }

  void asyncAfter(Duration delay, Task task) override {
    if (delay <= Duration::zero()) {
      return async(std::move(task));
    }
    pool_.ensureThread();
    runAfter(executor_, delay, [&pool = pool_, executor = executor_, task = std::move(task)]() mutable {
      submit(pool, executor, std::move(task));
    });
  }

 private:
  static void submit(Pool& pool, const Executor& executor, Task task) {
    asio::post(executor, [employed = pool.employ(), task = std::move(task)]() mutable {
      task();
      task = nullptr;
    });
  }

  Pool& pool_;
  const Executor executor_;
};

using GlobalQueue = BackgroundQueue<Context::executor_type>;
using SerialQueue = BackgroundQueue<asio::strand<Context::executor_type>>;

class RepeatingTimer final : public Timer {
 public:
  RepeatingTimer(Context& context, Duration period, Task task)
      : schedule_(std::make_shared<Schedule>(context, std::max(period, Duration(1)), std::move(task))) {
    Schedule::arm(schedule_);
  }

 private:
  struct Schedule {
    Schedule(Context& context, Duration period, Task task)
        : timer(context, period), period(period), task(std::move(task)) {}

    static void arm(const std::shared_ptr<Schedule>& schedule) {
      schedule->timer.async_wait([known = std::weak_ptr(schedule)](const error_code& error) {
        const auto valid = known.lock();
        if (error || !valid) {
          return;
        }
        const auto missed = (std::chrono::steady_clock::now() - valid->timer.expiry()) / valid->period;
        valid->timer.expires_at(valid->timer.expiry() + (missed + 1) * valid->period);
        arm(valid);
        valid->task();
      });
    }

    asio::steady_timer timer;
    const Duration period;
    const Task task;
  };

  std::shared_ptr<Schedule> schedule_;
};

}  // namespace

struct AsioDispatch::Loops {
  Loops() = default;
  Loops(const Loops&) = delete;
  Loops& operator=(const Loops&) = delete;
  ~Loops() {
    pool.close();
    pool.context().dropTasks();
    mainContext.dropTasks();
  }

  const std::thread::id mainThread = std::this_thread::get_id();
  Context mainContext;
  asio::executor_work_guard<Context::executor_type> mainWork{mainContext.get_executor()};
  MainQueue mainQueue{mainContext};
  Pool pool;
  GlobalQueue globalQueue{pool, pool.context().get_executor()};
};

AsioDispatch::AsioDispatch() : loops_(std::make_unique<Loops>()) {}

AsioDispatch::~AsioDispatch() = default;

void AsioDispatch::run() {
  loops_->mainContext.restart();
  loops_->mainContext.run();
}

void AsioDispatch::stop() { loops_->mainContext.stop(); }

bool AsioDispatch::runOne(std::chrono::steady_clock::time_point deadline) {
  loops_->mainContext.restart();
  return loops_->mainContext.run_one_until(deadline) > 0;
}

Date AsioDispatch::now() const {
  return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

bool AsioDispatch::isMainThread() const { return std::this_thread::get_id() == loops_->mainThread; }

DispatchQueue& AsioDispatch::main() { return loops_->mainQueue; }

DispatchQueue& AsioDispatch::global(QualityOfService) { return loops_->globalQueue; }

std::shared_ptr<DispatchQueue> AsioDispatch::makeSerialQueue(std::string_view) {
  return std::make_shared<SerialQueue>(loops_->pool, asio::make_strand(loops_->pool.context()));
}

std::unique_ptr<Timer> AsioDispatch::scheduleRepeating(Duration period, Task task) {
  return std::make_unique<RepeatingTimer>(loops_->mainContext, period, std::move(task));
}

}  // namespace quillmar
