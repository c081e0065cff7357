#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <chrono>
#include <functional>

namespace quillmar::tunnel {

// How long this machine has slept since it started.
std::chrono::nanoseconds timeAsleep();

// Reports that this machine has slept. The kernel sets the clock when the machine wakes up, and notifies a
// timer of this program. There is no polling.
class SleepWatch {
 public:
  // Connections survive a shorter sleep.
  static constexpr std::chrono::seconds shortest{1};

  SleepWatch(boost::asio::io_context& context, std::function<void()> woke,
             std::function<std::chrono::nanoseconds()> asleep = timeAsleep);

  // Called when the clock was set, for whatever reason.
  void look();

 private:
  void wait();

  boost::asio::posix::stream_descriptor clock_;
  const std::function<void()> woke_;
  const std::function<std::chrono::nanoseconds()> asleep_;
  std::chrono::nanoseconds lastAsleep_;
};

}  // namespace quillmar::tunnel
