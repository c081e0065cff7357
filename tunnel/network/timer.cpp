#include "tunnel/network/timer.h"

#include <sys/timerfd.h>

#include <algorithm>
#include <boost/system/error_code.hpp>
#include <ctime>
#include <utility>

namespace quillmar::tunnel {
namespace {

itimerspec once(std::chrono::nanoseconds after) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(after);
  return {.it_interval = {}, .it_value = {.tv_sec = seconds.count(), .tv_nsec = (after - seconds).count()}};
}

}  // namespace

Timer::Timer(const boost::asio::any_io_executor& executor) : descriptor_(executor) {
  boost::system::error_code ignored;
  descriptor_.assign(::timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK), ignored);
}

void Timer::start(std::chrono::nanoseconds after, std::function<void()> ended) {
  boost::system::error_code ignored;
  descriptor_.cancel(ignored);
  // Zero would disarm it.
  const auto time = once(std::max(after, std::chrono::nanoseconds(1)));
  ::timerfd_settime(descriptor_.native_handle(), 0, &time, nullptr);
  descriptor_.async_wait(
      boost::asio::posix::stream_descriptor::wait_read,
      [ended = std::move(ended), current = turn_, turn = ++*turn_](boost::system::error_code error) {
        if (!error && *current == turn) {
          ended();
        }
      });
}

void Timer::cancel() {
  ++*turn_;
  boost::system::error_code ignored;
  descriptor_.cancel(ignored);
  const itimerspec never{};
  ::timerfd_settime(descriptor_.native_handle(), 0, &never, nullptr);
}

}  // namespace quillmar::tunnel
