#include "tunnel/service/worker_guard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillmar::tunnel {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
namespace ip = boost::asio::ip;

struct TunnelWorkerGuard : testing::Test {
  TunnelWorkerGuard() { guard.expect("doh.example"); }
  bool take(const FromWorker& message) { return guard.take(now, encode(message)); }

  Time now = Time{} + 1h;
  std::vector<std::string> heard;
  WorkerGuard guard{
      {.tell = [this](const std::string& line) { heard.push_back(line); },
       .serversWanted = [this] { heard.emplace_back("servers?"); },
       .ponged = [this] { heard.emplace_back("pong"); },
       .reached = [this](const std::string& host,
                         const ip::address& address) { heard.push_back(host + ' ' + address.to_string()); }}};
};

TEST_F(TunnelWorkerGuard, passes_on_what_a_worker_says) {
  EXPECT_TRUE(take(Line{"The endpoint answers."}));
  EXPECT_TRUE(take(WantServers{}));
  EXPECT_TRUE(take(Reached{"doh.example", ip::make_address("192.0.2.7")}));
  EXPECT_TRUE(take(Pong{}));
  EXPECT_THAT(heard, ElementsAre("The endpoint answers.", "servers?", "doh.example 192.0.2.7", "pong"));
}

TEST_F(TunnelWorkerGuard, keeps_a_line_on_one_printable_line) {
  EXPECT_TRUE(take(Line{"a\nProtects this machine.\r\x1b[31m\x7f\xc3\xa4"}));
  EXPECT_THAT(heard, ElementsAre("a?Protects this machine.??[31m???"));
}

TEST_F(TunnelWorkerGuard, accepts_only_addresses_of_its_endpoint) {
  for (const auto* address : {"127.0.0.1", "::1", "0.0.0.0", "::", "224.0.0.1", "ff02::1"}) {
    EXPECT_TRUE(take(Reached{"doh.example", ip::make_address(address)})) << address;
  }
  EXPECT_TRUE(take(Reached{"else.example", ip::make_address("192.0.2.7")}));
  EXPECT_TRUE(take(Reached{"", ip::make_address("192.0.2.7")}));
  guard.expect("");
  EXPECT_TRUE(take(Reached{"doh.example", ip::make_address("192.0.2.7")}));
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(TunnelWorkerGuard, rejects_invalid_messages) {
  EXPECT_FALSE(guard.take(now, ""));
  EXPECT_FALSE(guard.take(now, std::string(largestWorkerMessage, 'x')));
  EXPECT_FALSE(guard.take(now, encode(ToWorker(NetworkChanged{}))));
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(TunnelWorkerGuard, rejects_a_flood) {
  for (int count = 0; count < WorkerGuard::mostMessages; ++count) {
    EXPECT_TRUE(take(WantServers{})) << count;
  }
  EXPECT_FALSE(take(WantServers{}));
  EXPECT_THAT(heard, SizeIs(WorkerGuard::mostMessages));
  guard.startAnew();
  EXPECT_TRUE(take(WantServers{})) << "another worker";
}

TEST_F(TunnelWorkerGuard, accepts_a_worker_that_never_reaches_anything) {
  for (int second = 0; second < 3600; ++second, now += 1s) {
    EXPECT_TRUE(take(WantServers{}) && take(Line{"The endpoint can't be reached."})) << second;
  }
}

TEST(TunnelRateLimit, refills_with_time_up_to_its_size) {
  Time now = Time{} + 1h;
  RateLimit limit(2, 1s);
  EXPECT_TRUE(limit.take(now) && limit.take(now));
  EXPECT_FALSE(limit.take(now));
  EXPECT_FALSE(limit.take(now + 999ms));
  now += 1s;
  EXPECT_TRUE(limit.take(now));
  EXPECT_FALSE(limit.take(now));
  now += 1h;
  EXPECT_TRUE(limit.take(now) && limit.take(now));
  EXPECT_FALSE(limit.take(now));
}

TEST(TunnelRestarts, are_immediate_unless_workers_keep_dying) {
  Restarts restarts;
  Time now = Time{} + 1h;
  std::vector<std::chrono::milliseconds> pauses;
  for (int death = 0; death < 9; ++death) {
    const auto started = now;
    now += 10ms;
    pauses.push_back(restarts.died(now, started));
  }
  EXPECT_THAT(pauses, ElementsAre(0ms, 0ms, 0ms, 250ms, 500ms, 1000ms, 2000ms, 2000ms, 2000ms));
  EXPECT_EQ(restarts.died(now + Restarts::longLife, now), 0ms) << "of another cause";
}

}  // namespace
}  // namespace quillmar::tunnel
