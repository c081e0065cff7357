#include "tunnel/resolver/upstreams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tunnel/support/fake_connection.h"

namespace quillmar::tunnel {
namespace {

using namespace std::chrono_literals;
using test::FakeConnection;
using test::FakeConnections;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct TunnelUpstreams : testing::Test {
  void ask(Ticket ticket) {
    upstreams.ask(now, ticket, "question", [this, ticket](Time, std::variant<Fetched, Failure> outcome) {
      const auto* failure = std::get_if<Failure>(&outcome);
      outcomes[ticket] = failure ? sentence(*failure) : std::get<Fetched>(outcome).message;
    });
  }
  void take() {
    upstreams.take(now, connections.connect());
    upstreams.wake(now);
  }
  FakeConnection& made(std::size_t index) { return *connections.made.at(index); }
  void open(std::size_t index) {
    made(index).events->opened(now);
    upstreams.wake(now);
  }
  void answer(std::size_t index, Ticket ticket, const std::string& body) {
    made(index).events->answered(now, ticket, HttpAnswer{.status = 200, .isDns = true, .body = body});
    upstreams.wake(now);
  }

  Time now = Time{} + 1h;
  FakeConnections connections;
  int changes = 0;
  Upstreams upstreams{[this] { ++changes; }};
  std::map<Ticket, std::string> outcomes;
};

TEST_F(TunnelUpstreams, fail_without_an_endpoint) {
  ask(1);
  EXPECT_EQ(outcomes[1], "No endpoint is configured.");
  take();
  EXPECT_THAT(connections.made, IsEmpty()) << "nothing to ask yet";
  ask(2);
  open(0);
  answer(0, 2, "answer");
  EXPECT_EQ(outcomes[2], "answer");
  EXPECT_EQ(changes, 0);
}

TEST_F(TunnelUpstreams, ask_the_old_endpoint_until_the_new_one_is_connected) {
  take();
  ask(1);
  open(0);
  take();
  ASSERT_THAT(connections.made, SizeIs(2));
  ask(2);
  EXPECT_THAT(made(0).sent, ElementsAre(1, 2));
  EXPECT_EQ(changes, 0);
  open(1);
  EXPECT_EQ(changes, 1);
  ask(3);
  EXPECT_THAT(made(0).sent, ElementsAre(1, 2));
  EXPECT_THAT(made(1).sent, ElementsAre(3));
}

TEST_F(TunnelUpstreams, finish_open_questions_at_the_old_endpoint) {
  take();
  ask(1);
  ask(2);
  open(0);
  take();
  open(1);
  EXPECT_THAT(connections.alive, SizeIs(2));
  answer(0, 1, "old");
  EXPECT_THAT(connections.alive, SizeIs(2));
  upstreams.cancel(2);
  upstreams.wake(now);
  EXPECT_THAT(connections.alive, SizeIs(1));
  EXPECT_EQ(outcomes[1], "old");
}

TEST_F(TunnelUpstreams, change_to_an_endpoint_that_cannot_be_reached_too) {
  take();
  ask(1);
  open(0);
  answer(0, 1, "old");
  take();
  EXPECT_EQ(upstreams.wakeTime(), now + DohUpstream::patienceToConnect);
  now += DohUpstream::patienceToConnect;
  upstreams.wake(now);
  EXPECT_EQ(changes, 1);
  ask(2);
  EXPECT_EQ(outcomes.count(2), 0U);
  ASSERT_THAT(connections.made, SizeIs(3)) << "a question is worth an attempt";
  made(2).events->ended(now, Failure{Cause::unreachable});
  EXPECT_EQ(outcomes[2], "The endpoint can't be reached.");
}

TEST_F(TunnelUpstreams, change_to_the_latest_of_several_endpoints) {
  take();
  ask(1);
  open(0);
  take();
  take();
  ASSERT_THAT(connections.made, SizeIs(3));
  EXPECT_THAT(connections.alive, SizeIs(2));
  open(2);
  ask(2);
  EXPECT_THAT(made(2).sent, ElementsAre(2));
  EXPECT_EQ(changes, 1);
}

TEST_F(TunnelUpstreams, finish_open_questions_when_there_is_no_endpoint_any_more) {
  take();
  ask(1);
  open(0);
  upstreams.takeNone();
  EXPECT_EQ(changes, 1);
  ask(2);
  EXPECT_EQ(outcomes[2], "No endpoint is configured.");
  answer(0, 1, "answer");
  EXPECT_EQ(outcomes[1], "answer");
  EXPECT_THAT(connections.alive, IsEmpty());
  EXPECT_EQ(upstreams.wakeTime(), std::nullopt);
}

}  // namespace
}  // namespace quillmar::tunnel
