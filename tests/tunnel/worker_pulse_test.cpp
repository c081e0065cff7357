#include "tunnel/service/worker_pulse.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <optional>

#include "tests/tunnel/support/timers.h"
#include "tunnel/network/sockets.h"

namespace quillmar::tunnel {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;

const testing::Matcher<std::vector<std::string>> isStopped = Each(HasSubstr("it_value: (0, 0)"));

struct TunnelWorkerPulse : testing::Test {
  TunnelWorkerPulse() {
    listeners.emplace_back(bound.udp.release());
    listeners.emplace_back(bound.tcp.release());
  }
  void start(WorkerPulse::Pace pace) {
    pulse.emplace(context, listeners,
                  WorkerPulse::Events{.ask = [this] { ++asked; }, .isSilent = [this] { ++silent; }}, pace);
    pulse->startAnew();
  }
  // Sends a question, which stays in the socket until a worker reads it.
  void question() { client.send_to(boost::asio::buffer("question", 8), server); }
  void takeQuestions() const {
    std::array<char, 16> buffer{};
    while (::recv(listeners.front().get(), buffer.data(), buffer.size(), MSG_DONTWAIT) > 0) {
    }
  }

  boost::asio::io_context context{1};
  const boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work{context.get_executor()};
  Sockets bound = std::get<Sockets>(bindSockets(context, *parseListenAddress("127.0.0.1:0")));
  const boost::asio::ip::udp::endpoint server = bound.udp.local_endpoint();
  UdpSocket client{context, boost::asio::ip::udp::v4()};
  std::vector<OpenFile> listeners;
  std::optional<WorkerPulse> pulse;
  int asked = 0;
  int silent = 0;
};

TEST_F(TunnelWorkerPulse, is_not_taken_while_nobody_asks) {
  start({});
  EXPECT_EQ(context.poll(), 0U);
  EXPECT_THAT(test::timers(), isStopped);
}

TEST_F(TunnelWorkerPulse, is_taken_when_a_question_comes_over_either_protocol) {
  start({.patience = 1h});
  question();
  context.run_one();
  EXPECT_EQ(asked, 1);
  takeQuestions();
  pulse->startAnew();
  boost::asio::ip::tcp::socket stream(context);
  stream.connect({server.address(), server.port()});
  while (asked < 2) {
    context.run_one();
  }
  context.poll();
  EXPECT_EQ(asked, 2);
}

TEST_F(TunnelWorkerPulse, is_missed_twice_before_the_worker_is_given_up) {
  start({.patience = 1ms});
  question();
  while (silent == 0) {
    context.run_one();
  }
  EXPECT_EQ(asked, 2);
  context.poll();
  EXPECT_EQ(silent, 1) << "until there is another worker";
  pulse->startAnew();
  while (silent == 1) {
    context.run_one();
  }
  EXPECT_EQ(asked, 4) << "the question still waits";
}

TEST_F(TunnelWorkerPulse, that_is_late_is_no_missing_one) {
  start({.patience = 1ms, .rest = 1h});
  question();
  while (asked < 2) {
    context.run_one();
  }
  pulse->beat();
  context.poll();
  EXPECT_EQ(silent, 0);
  EXPECT_THAT(test::timers(), Contains(HasSubstr("it_value: (3599,")));
}

TEST_F(TunnelWorkerPulse, is_not_taken_for_each_question) {
  start({.patience = 1h, .rest = 1h});
  question();
  context.run_one();
  pulse->beat();
  question();
  question();
  context.poll();
  EXPECT_EQ(asked, 1);
}

TEST_F(TunnelWorkerPulse, is_let_alone_after_the_last_question) {
  start({.patience = 1h, .rest = 1ms});
  question();
  context.run_one();
  pulse->beat();
  takeQuestions();
  while (!testing::Value(test::timers(), isStopped)) {
    context.run_one();
  }
  context.poll();
  EXPECT_EQ(asked, 1);
  EXPECT_THAT(test::timers(), isStopped);
  question();
  while (asked < 2) {
    context.run_one();
  }
}

TEST_F(TunnelWorkerPulse, of_nobody_who_was_asked_is_nothing) {
  start({.rest = 1h});
  pulse->beat();
  EXPECT_THAT(test::timers(), isStopped);
}

}  // namespace
}  // namespace quillmar::tunnel
