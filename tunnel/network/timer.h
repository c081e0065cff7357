#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <chrono>
#include <functional>
#include <memory>

namespace quillmar::tunnel {

// A timer on its own timerfd. It continues while the machine sleeps. Asio's timers use one shared timerfd,
// which wakes an idle process every five minutes. If no file descriptor is available, the timer never
// expires.
class Timer {
 public:
  explicit Timer(const boost::asio::any_io_executor& executor);
  explicit Timer(boost::asio::io_context& context) : Timer(context.get_executor()) {}
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;
  ~Timer() { ++*turn_; }

  // Calls `ended` once after this time. Replaces an earlier start, whose `ended` is not called.
  void start(std::chrono::nanoseconds after, std::function<void()> ended);
  void cancel();

 private:
  boost::asio::posix::stream_descriptor descriptor_;
  // Identifies the current start. The handler of an earlier one may already be in the context's queue.
  const std::shared_ptr<unsigned> turn_ = std::make_shared<unsigned>(0);
};

}  // namespace quillmar::tunnel
