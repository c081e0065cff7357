#include "tunnel/network/timer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "tests/tunnel/support/timers.h"
#include "tunnel/network/alarm.h"

namespace quillmar::tunnel {
namespace {

using namespace std::chrono_literals;
using test::timers;
using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST(TunnelTimer, expires_once) {
  boost::asio::io_context context;
  Timer timer(context);
  int ended = 0;
  timer.start(1ms, [&] { ++ended; });
  context.run();
  EXPECT_EQ(ended, 1);
  context.restart();
  timer.start(-1s, [&] { ++ended; });
  context.run();
  EXPECT_EQ(ended, 2) << "what is late is at once";
}

TEST(TunnelTimer, waits_for_its_latest_start) {
  boost::asio::io_context context;
  Timer timer(context);
  std::string ended;
  timer.start(0ms, [&] { ended += "first"; });
  timer.start(1ms, [&] { ended += "second"; });
  context.run();
  EXPECT_EQ(ended, "second");
  context.restart();
  timer.start(0ms, [&] { ended += "third"; });
  timer.cancel();
  context.run();
  {
    context.restart();
    Timer gone(context);
    gone.start(0ms, [&] { ended += "fourth"; });
  }
  context.run();
  EXPECT_EQ(ended, "second");
}

TEST(TunnelTimer, never_expires_without_a_free_descriptor) {
  boost::asio::io_context context;
  const Timer opensWhatTheContextNeeds(context);
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none{0, before.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  Timer timer(context);
  ::setrlimit(RLIMIT_NOFILE, &before);
  bool hasEnded = false;
  timer.start(0ms, [&] { hasEnded = true; });
  timer.cancel();
  timer.start(0ms, [&] { hasEnded = true; });
  context.run();
  EXPECT_FALSE(hasEnded);
}

// An armed timer would wake the process even if nobody waits for it.
TEST(TunnelTimer, leaves_nothing_armed_behind) {
  boost::asio::io_context context;
  Alarm alarm(context);
  alarm.setFor(BootClock::now(), BootClock::now() + 1h);
  EXPECT_THAT(timers(), testing::Contains(HasSubstr("it_value: (3599,")));
  alarm.setFor(BootClock::now(), BootClock::now());
  context.run_one();  // the handler of the replaced wait
  context.run_one();
  alarm.setFor(BootClock::now(), std::nullopt);
  EXPECT_THAT(timers(), AllOf(Not(IsEmpty()), Each(HasSubstr("it_value: (0, 0)"))));
}

}  // namespace
}  // namespace quillmar::tunnel
