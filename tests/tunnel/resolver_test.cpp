#include "tunnel/resolver/resolver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>

#include "tests/tunnel/support/messages.h"

namespace quillmar::tunnel {
namespace {

using namespace std::chrono_literals;
using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

// Answers when a test calls `answer`.
class FakeUpstream final : public Upstream {
 public:
  void ask(Time now, Ticket ticket, std::string question, Done done) override {
    questions.push_back(std::move(question));
    if (answersAtOnce) {
      return done(now, *answersAtOnce);
    }
    open.emplace(ticket, std::move(done));
  }
  void cancel(Ticket ticket) override {
    open.erase(ticket);
    cancelled.insert(ticket);
  }
  // Answers the oldest open question.
  void answer(Time now, std::variant<Fetched, Failure> outcome) {
    open.extract(open.begin()).mapped()(now, std::move(outcome));
  }

  std::vector<std::string> questions;
  std::map<Ticket, Done> open;
  std::set<Ticket> cancelled;
  std::optional<std::variant<Fetched, Failure>> answersAtOnce;
};

struct TunnelResolver : testing::Test {
  void ask(const QueryText& query = {}, Channel channel = Channel::udp) { askRaw(queryText(query), channel); }
  void askRaw(const std::string& message, Channel channel = Channel::udp) {
    resolver->ask(now, message, channel, [this](std::string reply) { replies.push_back(std::move(reply)); });
  }
  void answer(const AnswerText& text = {}, std::chrono::seconds age = 0s) {
    upstream.answer(now, Fetched{answerText(text), age});
  }
  void pass(std::chrono::milliseconds duration) {
    for (const Time end = now + duration; now < end;) {
      const auto wake = resolver->wakeTime();
      now = wake && *wake < end ? *wake : end;
      resolver->wake(now);
    }
  }
  std::uint16_t lastCode() const { return readHeader(replies.back())->rcode(); }
  std::uint32_t lastLife() const { return get32(replies.back(), replies.back().size() - 10); }

  Time now{};
  std::vector<std::string> told;
  FailureLog log{[this](const std::string& line) { told.push_back(line); }};
  FakeUpstream upstream;
  std::unique_ptr<Resolver> resolver = std::make_unique<Resolver>(upstream, log);
  std::vector<std::string> replies;
};

TEST_F(TunnelResolver, asks_and_answers) {
  ask({.name = "WWW.example.org", .id = 99});
  ASSERT_THAT(upstream.questions, SizeIs(1));
  EXPECT_THAT(replies, IsEmpty());
  answer();
  ASSERT_THAT(replies, SizeIs(1));
  const auto read = readByLdns(replies[0]);
  EXPECT_THAT(read, HasSubstr("id: 99"));
  EXPECT_THAT(read, HasSubstr("WWW.example.org."));
  EXPECT_THAT(read, HasSubstr("192.0.2.7"));
}

TEST_F(TunnelResolver, forgets_what_it_has_and_what_is_on_its_way) {
  ask();
  answer();
  ask({.name = "b.example.org"});
  resolver->forget();
  ask();
  EXPECT_THAT(upstream.questions, SizeIs(3)) << "not from the cache";
  ask({.name = "b.example.org"});
  EXPECT_THAT(upstream.questions, SizeIs(4)) << "not by the question that was under way";
  answer({.name = "b.example.org"});
  EXPECT_THAT(replies, SizeIs(2)) << "who waited is answered";
  answer();
  answer({.name = "b.example.org", .answers = {{.data = "\xc0\x00\x02\x08"s}}});
  EXPECT_THAT(replies, SizeIs(4));
  ask({.name = "b.example.org"});
  EXPECT_THAT(upstream.questions, SizeIs(4));
  EXPECT_THAT(readByLdns(replies.back()), HasSubstr("192.0.2.8")) << "the older answer is not kept";
}

TEST_F(TunnelResolver, answers_local_names_itself_whatever_their_case) {
  ask({.name = "LocalHost"});
  ask({.type = type::axfr});
  askRaw(queryText({}).substr(0, 20));
  EXPECT_THAT(replies, SizeIs(3));
  EXPECT_THAT(upstream.questions, IsEmpty());
}

TEST_F(TunnelResolver, does_not_answer_what_is_not_a_query) {
  askRaw("x");
  askRaw(answerText({}));
  EXPECT_THAT(replies, IsEmpty());
  EXPECT_THAT(upstream.questions, IsEmpty());
}

TEST_F(TunnelResolver, answers_from_the_cache_with_the_remaining_ttl) {
  ask();
  answer();
  EXPECT_EQ(lastLife(), 60U);
  pass(20s);
  ask();
  EXPECT_EQ(lastLife(), 40U);
  pass(500ms);
  ask();
  EXPECT_EQ(lastLife(), 39U) << "begun seconds count";
  pass(39s);
  ask();
  EXPECT_EQ(lastLife(), 0U);
  EXPECT_THAT(upstream.questions, SizeIs(1));
  pass(500ms);
  ask();
  EXPECT_THAT(upstream.questions, SizeIs(2));
  EXPECT_THAT(replies, SizeIs(4)) << "nothing stale";
}

TEST_F(TunnelResolver, subtracts_the_age_of_an_answer) {
  ask();
  answer({}, 280s);
  EXPECT_EQ(lastLife(), 20U);
  pass(20s);
  ask();
  EXPECT_THAT(upstream.questions, SizeIs(2));
}

TEST_F(TunnelResolver, keeps_queries_with_different_flags_apart) {
  const std::vector<QueryText> different{{},
                                         {.name = "example.org"},
                                         {.type = type::aaaa},
                                         {.payload = 1232, .dnssecOk = true},
                                         {.flags = flag::recursionDesired | flag::checkingDisabled},
                                         {.flags = flag::recursionDesired | flag::authenticData},
                                         {.klass = 3}};
  for (const auto& query : different) {
    ask(query);
  }
  EXPECT_THAT(upstream.questions, SizeIs(different.size()));
  EXPECT_THAT(std::set(upstream.questions.begin(), upstream.questions.end()), SizeIs(different.size()));
}

TEST_F(TunnelResolver, asks_equal_questions_once) {
  ask({.id = 1});
  ask({.name = "www.EXAMPLE.org", .id = 2});
  ask({.id = 3, .payload = 1232});
  EXPECT_THAT(upstream.questions, SizeIs(1));
  answer();
  ASSERT_THAT(replies, SizeIs(3));
  for (std::uint16_t id = 1; id <= 3; ++id) {
    EXPECT_EQ(readHeader(replies[id - 1U])->id, id);
  }
  EXPECT_THAT(readByLdns(replies[1]), HasSubstr("www.EXAMPLE.org."));
  EXPECT_THAT(readByLdns(replies[2]), HasSubstr("EDNS"));
  EXPECT_THAT(readByLdns(replies[0]), Not(HasSubstr("EDNS")));
}

TEST_F(TunnelResolver, gives_up_after_four_seconds) {
  ask({.payload = 1232});
  pass(3900ms);
  EXPECT_THAT(replies, IsEmpty());
  pass(100ms);
  ASSERT_THAT(replies, SizeIs(1));
  EXPECT_EQ(lastCode(), rcode::servFail);
  EXPECT_THAT(replies[0], HasSubstr("The endpoint did not answer in time."));
  EXPECT_THAT(upstream.cancelled, ElementsAre(1));
  EXPECT_EQ(resolver->wakeTime(), std::nullopt) << "nothing wakes an idle machine";
}

TEST_F(TunnelResolver, answers_all_who_asked_at_the_first_ones_deadline) {
  ask({.id = 1});
  pass(3s);
  ask({.id = 2});
  pass(1s);
  EXPECT_THAT(replies, SizeIs(2));
}

TEST_F(TunnelResolver, each_question_has_its_own_four_seconds) {
  ask({.name = "a.example"});
  pass(2s);
  ask({.name = "b.example"});
  pass(2s);
  EXPECT_THAT(replies, SizeIs(1));
  pass(2s);
  EXPECT_THAT(replies, SizeIs(2));
}

TEST_F(TunnelResolver, holds_a_failure_for_a_second) {
  ask();
  upstream.answer(now, Failure{Cause::broken});
  EXPECT_EQ(lastCode(), rcode::servFail);
  pass(900ms);
  ask();
  EXPECT_EQ(lastCode(), rcode::servFail);
  ask({.name = "other.example"});
  EXPECT_THAT(upstream.questions, SizeIs(2)) << "of this name alone";
  pass(100ms);
  ask();
  EXPECT_THAT(upstream.questions, SizeIs(3));
}

TEST_F(TunnelResolver, holds_no_failure_of_another_network) {
  ask();
  ask({.name = "known.example"});
  upstream.answer(now, Failure{Cause::unreachable});
  answer({.name = "known.example"});
  pass(100ms);
  resolver->networkChanged(now);
  ask();
  ask({.name = "known.example"});
  EXPECT_THAT(upstream.questions, SizeIs(3)) << "what is known is still true";
  upstream.answer(now, Failure{Cause::unreachable});
  ask();
  EXPECT_THAT(upstream.questions, SizeIs(3)) << "of this network";
}

TEST_F(TunnelResolver, holds_the_endpoints_own_failure_for_a_second) {
  ask({.payload = 1232});
  answer({.rcode = rcode::servFail, .answers = {}});
  EXPECT_EQ(lastCode(), rcode::servFail);
  EXPECT_THAT(replies.back(), HasSubstr("could not find the answer"));
  pass(999ms);
  ask();
  EXPECT_THAT(upstream.questions, SizeIs(1));
  pass(1ms);
  ask();
  EXPECT_THAT(upstream.questions, SizeIs(2));
}

TEST_F(TunnelResolver, explains_every_failure_to_clients_with_edns) {
  for (const auto cause : {Cause::late, Cause::unreachable, Cause::unknownAddress, Cause::untrusted,
                           Cause::noHttp2, Cause::broken, Cause::askedToWait, Cause::refused,
                           Cause::redirected, Cause::notDns, Cause::tooLong}) {
    upstream.answersAtOnce = Failure{cause, "this"};
    ask({.payload = 1232});
    EXPECT_EQ(lastCode(), rcode::servFail);
    EXPECT_THAT(replies.back(), HasSubstr(sentence({cause, "this"})));
    ask();
    EXPECT_EQ(replies.back().size(), queryText({}).size()) << "a plain client gets a plain error";
    pass(1s);
  }
}

TEST_F(TunnelResolver, rejects_invalid_answers) {
  const std::map<std::string, std::string> bad{{"<html></html>", "malformed"},
                                               {answerText({.name = "bad.example"}), "another question"},
                                               {answerText({.moreFlags = flag::truncated}), "truncated"},
                                               {std::string(70'000, 'x'), "malformed"}};
  for (const auto& [message, text] : bad) {
    ask({.payload = 1232});
    upstream.answer(now, Fetched{message});
    EXPECT_EQ(lastCode(), rcode::servFail);
    EXPECT_THAT(replies.back(), HasSubstr(text));
    pass(1s);
  }
}

TEST_F(TunnelResolver, fails_at_once_when_1024_clients_wait) {
  for (int number = 0; number < 1023; ++number) {
    ask({.name = std::to_string(number) + ".example"});
  }
  ask({.name = "0.example"});
  EXPECT_THAT(replies, IsEmpty());
  ask({.name = "0.example", .payload = 1232});
  ASSERT_THAT(replies, SizeIs(1)) << "joining counts too";
  EXPECT_EQ(lastCode(), rcode::servFail);
  EXPECT_THAT(replies[0], HasSubstr("Too many queries"));
  answer({.name = "0.example"});
  EXPECT_THAT(replies, SizeIs(3));
  ask({.name = "more.example"});
  EXPECT_THAT(replies, SizeIs(3)) << "there is room again";
  pass(4s);
  EXPECT_THAT(replies, SizeIs(3 + 1023));
  ask({.name = "again.example"});
  EXPECT_THAT(replies, SizeIs(3 + 1023));
}

TEST_F(TunnelResolver, logs_a_cause_once_however_often_it_occurs) {
  upstream.answersAtOnce = Failure{Cause::unreachable, "Connection refused"};
  for (int second = 0; second < 200; ++second) {
    ask();
    ask({.name = std::to_string(second) + ".example"});
    pass(1s);
  }
  EXPECT_THAT(told, ElementsAre("The endpoint can't be reached: Connection refused."));
  upstream.answersAtOnce = Failure{Cause::refused, "status 500"};
  ask();
  upstream.answersAtOnce = Fetched{answerText({})};
  pass(1s);
  ask();
  EXPECT_THAT(told,
              ElementsAre("The endpoint can't be reached: Connection refused.",
                          "The endpoint answered with an HTTP error: status 500.", "The endpoint answers."));
}

TEST_F(TunnelResolver, logs_a_cause_again_after_a_minute_without_it) {
  const auto failOnce = [this] {
    upstream.answersAtOnce = Failure{Cause::late};
    ask({.name = std::to_string(now.time_since_epoch().count()) + ".example"});
  };
  failOnce();
  pass(59s);
  failOnce();
  EXPECT_THAT(told, SizeIs(1));
  pass(60s);
  failOnce();
  EXPECT_THAT(told, SizeIs(2));
}

TEST_F(TunnelResolver, truncates_over_udp_and_not_over_tcp) {
  const AnswerText big{.answers = {{.data = std::string(600, 'x')}}};
  ask({}, Channel::udp);
  ask({}, Channel::tcp);
  answer(big);
  ASSERT_THAT(replies, SizeIs(2));
  EXPECT_NE(get16(replies[0], 2) & flag::truncated, 0);
  EXPECT_EQ(get16(replies[1], 2) & flag::truncated, 0);
  EXPECT_EQ(replies[1].size(), answerText(big).size());
}

TEST_F(TunnelResolver, sends_no_reply_after_its_destruction) {
  ask();
  ask({.name = "other.example"});
  resolver.reset();
  EXPECT_THAT(upstream.open, IsEmpty());
  EXPECT_THAT(replies, IsEmpty());
}

}  // namespace
}  // namespace quillmar::tunnel
