#include "tunnel/resolver/doh_upstream.h"

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
using testing::Pair;
using testing::SizeIs;

const HttpAnswer goodAnswer{.status = 200, .isDns = true, .body = "answer"};

struct TunnelUpstream : testing::Test {
  void ask(Ticket ticket) {
    upstream.ask(now, ticket, "question", [this, ticket](Time, std::variant<Fetched, Failure> outcome) {
      const auto* failure = std::get_if<Failure>(&outcome);
      const auto text = failure ? sentence(*failure) : std::get<Fetched>(outcome).message;
      EXPECT_TRUE(outcomes.emplace(ticket, text).second) << "answered twice";
    });
  }
  void pass(std::chrono::milliseconds duration) {
    for (const Time end = now + duration; now < end;) {
      const auto wake = upstream.wakeTime();
      now = wake && *wake < end ? std::max(*wake, now + 1ns) : end;
      upstream.wake(now);
    }
  }
  // The latest connection.
  FakeConnection& latest() { return *made.back(); }
  void open() { latest().events->opened(now); }
  void answer(Ticket ticket, const HttpAnswer& what = goodAnswer) {
    latest().events->answered(now, ticket, what);
  }
  // Opens a connection that has answered a question.
  void settle() {
    ask(1000);
    open();
    answer(1000);
    outcomes.clear();
    latest().sent.clear();
  }

  Time now = Time{} + 1h;
  FakeConnections connections;
  std::set<FakeConnection*>& alive = connections.alive;
  std::vector<FakeConnection*>& made = connections.made;
  DohUpstream upstream{connections.connect()};
  std::map<Ticket, std::string> outcomes;
};

TEST_F(TunnelUpstream, connects_with_the_first_question_and_stays_connected) {
  EXPECT_THAT(made, IsEmpty());
  EXPECT_EQ(upstream.wakeTime(), std::nullopt);
  ask(1);
  ask(2);
  ASSERT_THAT(made, SizeIs(1));
  EXPECT_THAT(latest().sent, IsEmpty());
  open();
  EXPECT_THAT(latest().sent, ElementsAre(1, 2));
  ask(3);
  EXPECT_THAT(latest().sent, ElementsAre(1, 2, 3));
  answer(2);
  answer(1);
  answer(3);
  EXPECT_THAT(outcomes, ElementsAre(Pair(1, "answer"), Pair(2, "answer"), Pair(3, "answer")));
  EXPECT_EQ(upstream.wakeTime(), std::nullopt) << "no wake-up while nobody asks";
  EXPECT_THAT(made, SizeIs(1));
}

TEST_F(TunnelUpstream, judges_answers) {
  settle();
  const std::vector<std::pair<std::variant<HttpAnswer, Failure>, std::string>> cases{
      {HttpAnswer{.status = 200, .isDns = false, .body = "<html>"},
       "The endpoint's answer is not a DNS message."},
      {HttpAnswer{.status = 301, .isDns = true}, "The endpoint redirects elsewhere: status 301."},
      {HttpAnswer{.status = 404, .isDns = true}, "The endpoint answered with an HTTP error: status 404."},
      {HttpAnswer{.status = 503, .isDns = true}, "The endpoint answered with an HTTP error: status 503."},
      {Failure{Cause::tooLong}, "The endpoint's answer is too long."}};
  Ticket ticket = 1;
  for (const auto& [what, text] : cases) {
    ask(++ticket);
    latest().events->answered(now, ticket, what);
    EXPECT_EQ(outcomes[ticket], text);
  }
}

TEST_F(TunnelUpstream, does_not_ask_before_retry_after) {
  settle();
  for (const int status : {429, 500, 503}) {
    ask(1);
    ask(2);
    answer(1, {.status = status, .retryAfter = 5s});
    latest().sent.clear();
    ask(3);
    EXPECT_EQ(outcomes.at(3), "The endpoint asked for a pause.") << status;
    EXPECT_THAT(latest().sent, IsEmpty());
    answer(2);
    EXPECT_EQ(outcomes.at(2), "answer") << "was under way";
    pass(5s);
    ask(4);
    EXPECT_THAT(latest().sent, ElementsAre(4));
    answer(4);
    outcomes.clear();
  }
}

TEST_F(TunnelUpstream, obeys_retry_after_for_a_minute_at_most) {
  settle();
  ask(1);
  answer(1, {.status = 503, .retryAfter = 24h});
  pass(60s);
  ask(2);
  EXPECT_FALSE(outcomes.contains(2));
  answer(2, {.status = 404, .retryAfter = 24h});
  ask(3);
  EXPECT_FALSE(outcomes.contains(3)) << "of no meaning with a 404";
}

TEST_F(TunnelUpstream, fails_at_once_and_tries_once_a_second_while_it_cannot_connect) {
  const Failure refused{Cause::unreachable, "Connection refused"};
  ask(1);
  latest().events->ended(now, refused);
  EXPECT_THAT(outcomes, ElementsAre(Pair(1, sentence(refused))));
  for (Ticket ticket = 2; ticket < 12; ++ticket) {
    ask(ticket);
    EXPECT_TRUE(outcomes.contains(ticket));
    pass(50ms);
  }
  EXPECT_THAT(made, SizeIs(1));
  pass(500ms);
  EXPECT_THAT(made, SizeIs(2));
  ask(12);
  EXPECT_TRUE(outcomes.contains(12)) << "while it tries";
  latest().events->ended(now, refused);
  pass(1s);
  EXPECT_THAT(made, SizeIs(3));
  open();
  ask(13);
  EXPECT_THAT(latest().sent, ElementsAre(13));
}

TEST_F(TunnelUpstream, stops_trying_while_nobody_asks) {
  ask(1);
  for (int tries = 0; tries < 30; ++tries) {
    if (!alive.empty()) {
      latest().events->ended(now, {Cause::unreachable});
    }
    pass(1s);
  }
  EXPECT_THAT(made, SizeIs(10));
  EXPECT_EQ(upstream.wakeTime(), std::nullopt);
  ask(2);
  EXPECT_THAT(made, SizeIs(11));
  EXPECT_FALSE(outcomes.contains(2));
  open();
  EXPECT_THAT(latest().sent, ElementsAre(2));
}

TEST_F(TunnelUpstream, gives_up_connecting_before_its_questions_time_out) {
  ask(1);
  pass(DohUpstream::patienceToConnect - 1ms);
  EXPECT_THAT(outcomes, IsEmpty());
  pass(1ms);
  EXPECT_EQ(outcomes.at(1), "The endpoint can't be reached: no answer.");
  EXPECT_THAT(alive, SizeIs(testing::Le(1U)));
}

TEST_F(TunnelUpstream, sends_a_ping_on_a_connection_that_was_idle) {
  settle();
  pass(9999ms);
  ask(1);
  EXPECT_EQ(latest().pings, 0);
  answer(1);
  pass(10s);
  ask(2);
  ask(3);
  EXPECT_EQ(latest().pings, 1) << "with the first question alone";
  latest().events->ponged(now);
  pass(1400ms);
  EXPECT_THAT(made, SizeIs(1));
}

TEST_F(TunnelUpstream, connects_again_without_a_pong_and_repeats_open_questions_once) {
  settle();
  auto& dead = latest();
  pass(1min);
  ask(1);
  pass(999ms);
  EXPECT_THAT(made, SizeIs(1));
  pass(1ms);
  ASSERT_THAT(made, SizeIs(2));
  ask(2);
  EXPECT_THAT(alive, SizeIs(2)) << "until the new one is there";
  open();
  EXPECT_FALSE(alive.contains(&dead));
  EXPECT_THAT(latest().sent, ElementsAre(1, 2));
  latest().events->ended(now, {Cause::broken});
  EXPECT_EQ(outcomes.at(1), "The connection to the endpoint broke.") << "not a third time";
  ASSERT_THAT(made, SizeIs(3));
  open();
  EXPECT_THAT(latest().sent, ElementsAre(2));
}

TEST_F(TunnelUpstream, sends_a_ping_when_an_answer_is_late) {
  settle();
  ask(1);
  pass(1499ms);
  EXPECT_EQ(latest().pings, 0);
  pass(1ms);
  EXPECT_EQ(latest().pings, 1);
  latest().events->ponged(now);
  pass(1499ms);
  EXPECT_EQ(latest().pings, 1) << "a slow answer is no dead connection";
  pass(1ms);
  EXPECT_EQ(latest().pings, 2);
  answer(1);
  EXPECT_EQ(upstream.wakeTime(), std::nullopt);
  EXPECT_THAT(made, SizeIs(1));
}

TEST_F(TunnelUpstream, returns_to_a_connection_that_was_only_slow) {
  settle();
  auto& slow = latest();
  pass(1min);
  ask(1);
  pass(1s);
  ASSERT_THAT(made, SizeIs(2));
  ask(2);
  slow.events->ponged(now);
  EXPECT_THAT(alive, ElementsAre(&slow));
  EXPECT_THAT(slow.sent, ElementsAre(1, 2));
  slow.events->answered(now, 1, goodAnswer);
  EXPECT_THAT(outcomes, ElementsAre(Pair(1, "answer")));
}

TEST_F(TunnelUpstream, does_not_reconnect_when_an_idle_connection_ends) {
  settle();
  latest().events->closing(now);
  latest().events->ended(now, {Cause::broken});
  EXPECT_THAT(alive, IsEmpty());
  EXPECT_EQ(upstream.wakeTime(), std::nullopt);
  ask(1);
  ASSERT_THAT(made, SizeIs(2));
  open();
  EXPECT_THAT(latest().sent, ElementsAre(1));
}

TEST_F(TunnelUpstream, lets_a_closing_connection_answer_its_open_questions) {
  settle();
  auto& closing = latest();
  ask(1);
  ask(2);
  closing.events->closing(now);
  EXPECT_THAT(made, SizeIs(1)) << "nothing new to ask yet";
  closing.events->dropped(now, 2);
  ASSERT_THAT(made, SizeIs(2));
  open();
  EXPECT_THAT(latest().sent, ElementsAre(2));
  closing.events->answered(now, 1, goodAnswer);
  answer(2);
  EXPECT_THAT(outcomes, ElementsAre(Pair(1, "answer"), Pair(2, "answer")));
  closing.events->ended(now, {Cause::broken});
  EXPECT_THAT(alive, ElementsAre(&latest()));
}

TEST_F(TunnelUpstream, repeats_the_questions_of_a_second_closing_connection) {
  settle();
  ask(1);
  latest().events->closing(now);
  ask(2);
  open();
  latest().events->closing(now);
  ASSERT_THAT(made, SizeIs(3)) << "for the question of the first";
  open();
  EXPECT_THAT(latest().sent, ElementsAre(1));
  EXPECT_THAT(alive, SizeIs(2));
  made[1]->events->answered(now, 2, goodAnswer);
  answer(1);
  EXPECT_THAT(outcomes, SizeIs(2));
}

TEST_F(TunnelUpstream, repeats_open_questions_when_a_good_connection_breaks) {
  settle();
  ask(1);
  latest().events->ended(now, {Cause::broken});
  ASSERT_THAT(made, SizeIs(2));
  open();
  EXPECT_THAT(latest().sent, ElementsAre(1));
  answer(1);
  EXPECT_EQ(outcomes.at(1), "answer");
}

TEST_F(TunnelUpstream, gives_up_a_request_that_is_dropped_twice) {
  settle();
  ask(1);
  latest().events->dropped(now, 1);
  EXPECT_THAT(latest().sent, ElementsAre(1, 1));
  latest().events->dropped(now, 1);
  EXPECT_EQ(outcomes.at(1), "The connection to the endpoint broke.");
  EXPECT_THAT(made, SizeIs(1));
}

TEST_F(TunnelUpstream, does_not_hammer_an_endpoint_that_ends_every_connection) {
  Ticket ticket = 0;
  for (int step = 0; step < 1000; ++step) {
    ask(++ticket);
    while (!alive.empty()) {
      open();
      latest().events->ended(now, {Cause::broken});
    }
    pass(10ms);
  }
  EXPECT_LE(made.size(), 12U) << "in ten seconds";
  EXPECT_THAT(outcomes, SizeIs(ticket));
}

TEST_F(TunnelUpstream, flushes_every_connection) {
  upstream.flush();
  settle();
  upstream.flush();
  EXPECT_EQ(latest().flushes, 1);
  auto& closing = latest();
  closing.events->closing(now);
  ask(1);
  upstream.flush();
  EXPECT_EQ(closing.flushes, 2);
  EXPECT_EQ(latest().flushes, 1);
}

TEST_F(TunnelUpstream, cancels_the_requests_of_cancelled_questions) {
  settle();
  ask(1);
  upstream.cancel(1);
  EXPECT_THAT(latest().cancelled, ElementsAre(1));
  answer(1);
  latest().events->dropped(now, 1);
  EXPECT_THAT(outcomes, IsEmpty());
  EXPECT_EQ(upstream.wakeTime(), std::nullopt);
  upstream.cancel(77);
}

TEST_F(TunnelUpstream, connects_anew_when_the_network_has_changed_and_its_connection_is_dead) {
  settle();
  ask(1);
  upstream.networkChanged(now);
  ASSERT_THAT(made, SizeIs(2));
  EXPECT_EQ(made.front()->pings, 1);
  open();
  EXPECT_THAT(latest().sent, ElementsAre(1)) << "asked again there";
  answer(1);
  EXPECT_THAT(outcomes, ElementsAre(Pair(1, "answer")));
  EXPECT_THAT(alive, ElementsAre(&latest()));
}

TEST_F(TunnelUpstream, keeps_its_connection_when_the_network_has_changed_and_it_lives) {
  settle();
  ask(1);
  auto* const first = made.front();
  upstream.networkChanged(now);
  first->events->ponged(now);
  EXPECT_THAT(alive, ElementsAre(first));
  first->events->answered(now, 1, goodAnswer);
  EXPECT_THAT(outcomes, ElementsAre(Pair(1, "answer")));
}

TEST_F(TunnelUpstream, connects_at_once_when_the_network_is_back) {
  ask(1);
  latest().events->ended(now, {Cause::unreachable, "Network is unreachable"});
  EXPECT_THAT(alive, IsEmpty());
  upstream.networkChanged(now);
  ASSERT_THAT(alive, SizeIs(1)) << "before the second is over";
  ask(2);
  open();
  EXPECT_THAT(latest().sent, ElementsAre(2));
}

TEST_F(TunnelUpstream, does_not_wait_for_a_connection_that_was_begun_on_another_network) {
  ask(1);
  pass(3s);
  upstream.networkChanged(now);
  ASSERT_THAT(made, SizeIs(2));
  EXPECT_THAT(alive, ElementsAre(&latest()));
  pass(3s);
  EXPECT_THAT(outcomes, IsEmpty()) << "it has its own four seconds";
  open();
  EXPECT_THAT(latest().sent, ElementsAre(1));
}

// The first question may come before the news that the machine is awake.
TEST_F(TunnelUpstream, does_not_wait_for_a_connection_that_died_while_the_machine_slept) {
  settle();
  auto* const dead = made.front();
  now += 8h;
  ask(1);
  EXPECT_THAT(dead->sent, ElementsAre(1));
  EXPECT_EQ(dead->pings, 1);
  pass(100ms);
  upstream.networkChanged(now);
  ASSERT_THAT(made, SizeIs(2)) << "at once";
  open();
  EXPECT_THAT(latest().sent, ElementsAre(1));
  answer(1);
  EXPECT_THAT(outcomes, ElementsAre(Pair(1, "answer")));
  EXPECT_THAT(alive, ElementsAre(&latest()));
}

TEST_F(TunnelUpstream, misses_a_connection_that_died_in_sleep_within_a_second_without_being_told) {
  settle();
  now += 8h;
  ask(1);
  pass(1s);
  ASSERT_THAT(made, SizeIs(2));
  open();
  EXPECT_THAT(latest().sent, ElementsAre(1));
}

TEST_F(TunnelUpstream, makes_no_connection_on_another_network_before_somebody_asks) {
  settle();
  pass(DohUpstream::idle);
  upstream.networkChanged(now);
  EXPECT_THAT(alive, IsEmpty());
  EXPECT_EQ(upstream.wakeTime(), std::nullopt);
  ask(1);
  EXPECT_THAT(alive, SizeIs(1)) << "a new one, without a doubt";
}

}  // namespace
}  // namespace quillmar::tunnel
