#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <chrono>
#include <functional>
#include <memory>

namespace quillmar::tunnel {

// A timer of the kernel's own, whose time goes on while the machine sleeps. Asio's timers share one that
// wakes an idle process every five minutes. It takes a descriptor, and never goes off where there is none
// left.
class Timer {
 public:
  explicit Timer(const boost::asio::any_io_executor& executor);
  explicit Timer(boost::asio::io_context& context) : Timer(context.get_executor()) {}
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;
  ~Timer() { ++*turn_; }

  // Calls `ended` once, so much later. What was waited for before is not called any more.
  void start(std::chrono::nanoseconds after, std::function<void()> ended);
  void cancel();

 private:
  boost::asio::posix::stream_descriptor descriptor_;
  // Of what is waited for now. One that has ended may be in the context's queue already.
  const std::shared_ptr<unsigned> turn_ = std::make_shared<unsigned>(0);
};

}  // namespace quillmar::tunnel
