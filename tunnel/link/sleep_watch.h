#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <chrono>
#include <functional>

namespace quillmar::tunnel {

// How long this machine has slept since it started.
std::chrono::nanoseconds timeAsleep();

// Tells when this machine has slept. The kernel wakes whoever waits for a change of the clock, and waking up
// is one; nobody looks at it in between, and no other program is asked.
class SleepWatch {
 public:
  // Shorter than this is no sleep that a connection would not survive.
  static constexpr std::chrono::seconds shortest{1};

  SleepWatch(boost::asio::io_context& context, std::function<void()> woke,
             std::function<std::chrono::nanoseconds()> asleep = timeAsleep);

  // The clock has changed, for one reason or another.
  void look();

 private:
  void wait();

  boost::asio::posix::stream_descriptor clock_;
  const std::function<void()> woke_;
  const std::function<std::chrono::nanoseconds()> asleep_;
  std::chrono::nanoseconds lastAsleep_;
};

}  // namespace quillmar::tunnel
