#include "tunnel/link/sleep_watch.h"

#include <sys/timerfd.h>

#include <ctime>
#include <limits>
#include <utility>

namespace quillmar::tunnel {
namespace {

std::chrono::nanoseconds nowBy(clockid_t clock) {
  timespec time{};
  ::clock_gettime(clock, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

std::chrono::nanoseconds timeAsleep() { return nowBy(CLOCK_BOOTTIME) - nowBy(CLOCK_MONOTONIC); }

SleepWatch::SleepWatch(boost::asio::io_context& context, std::function<void()> woke,
                       std::function<std::chrono::nanoseconds()> asleep)
    : clock_(context, ::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)),
      woke_(std::move(woke)),
      asleep_(std::move(asleep)),
      lastAsleep_(asleep_()) {
  wait();
}

void SleepWatch::wait() {
  // The timer never expires, but is cancelled when the clock is set, which wakes the waiting call.
  const itimerspec never{.it_interval = {},
                         .it_value = {.tv_sec = std::numeric_limits<time_t>::max(), .tv_nsec = 0}};
  ::timerfd_settime(clock_.native_handle(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &never, nullptr);
  clock_.async_wait(boost::asio::posix::stream_descriptor::wait_read,
                    [this](boost::system::error_code error) {
                      if (!error) {
                        look();
                        wait();
                      }
                    });
}

void SleepWatch::look() {
  const auto asleep = asleep_();
  if (asleep - std::exchange(lastAsleep_, asleep) >= shortest) {
    woke_();
  }
}

}  // namespace quillmar::tunnel
