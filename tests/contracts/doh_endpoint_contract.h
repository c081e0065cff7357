#pragma once

// What the tunnel's upstream promises with every DNS over HTTPS endpoint:
//   INSTANTIATE_TEST_SUITE_P(Dnsdist, DohEndpointContract,
//       testing::Values(factory<DohEndpointHarness, DnsdistHarness>("dnsdist")));

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>

#include "tests/contracts/factory.h"
#include "tunnel/dns/answer.h"
#include "tunnel/network/http2_connection.h"
#include "tunnel/resolver/doh_upstream.h"

namespace quillmar::tunnel {

// An endpoint. Every name below "site.example" has an IPv4 address there, and no name below "ads.example"
// exists.
class DohEndpointHarness : public Harness {
 public:
  virtual std::string url() = 0;
  virtual std::string caFile() = 0;
  // Existing connections end without another answer. New ones work.
  virtual void breakConnections() = 0;
};

// Sends a PING once the connection is open.
class PingingEvents final : public ConnectionEvents {
 public:
  void opened(Time) override {
    connection->ping();
    connection->flush();
  }
  void answered(Time, Ticket, std::variant<HttpAnswer, Failure>) override {}
  void dropped(Time, Ticket) override {}
  void ponged(Time) override { hasPong = true; }
  void closing(Time) override {}
  void ended(Time, const Failure& failure) override { ADD_FAILURE() << sentence(failure); }

  std::unique_ptr<Connection> connection;
  bool hasPong = false;
};

class DohEndpointContract : public testing::TestWithParam<Factory<DohEndpointHarness>> {
 protected:
  using Outcome = std::variant<Answer, std::string>;  // an answer, or the cause of the failure

  DohEndpointContract() { trust(harness_->caFile()); }

  // Connects anew with the system's authorities and those in this file.
  void trust(const std::string& caFile) {
    upstream_.reset();
    auto tls = TlsClient::make(caFile);
    route_ = std::make_shared<const Route>(Route{.endpoint = parseEndpoint(harness_->url()).value(),
                                                 .tls = std::get<std::unique_ptr<TlsClient>>(std::move(tls)),
                                                 .bootstrap = bootstrap_});
    upstream_ = std::make_unique<DohUpstream>([this](ConnectionEvents& events) { return connect(events); });
  }

  Ticket ask(const std::string& name, std::uint16_t recordType = type::a) {
    const Query query{.recursionDesired = true, .question = {.name = wireName(name), .type = recordType}};
    const Ticket ticket = ++lastTicket_;
    upstream_->ask(BootClock::now(), ticket, writeQuestion(query),
                   [this, ticket, question = query.question](Time, std::variant<Fetched, Failure> result) {
                     outcomes_.emplace(ticket, outcomeOf(std::move(result), question));
                   });
    return ticket;
  }
  void cancel(Ticket ticket) { upstream_->cancel(ticket); }

  // Runs until this number of questions has an outcome. False after a timeout.
  bool runUntil(std::size_t count) {
    return runUntil([this, count] { return outcomes_.size() >= count; });
  }
  bool runUntil(const std::function<bool()>& isDone) {
    bool isLate = false;
    boost::asio::steady_timer timeout(context_, std::chrono::seconds(30));
    timeout.async_wait([&](boost::system::error_code error) { isLate = !error; });
    for (upstream_->flush(); !isDone() && !isLate; upstream_->flush()) {
      context_.run_one();
      upstream_->wake(BootClock::now());
    }
    return !isLate;
  }
  std::unique_ptr<Connection> connect(ConnectionEvents& events) {
    return std::make_unique<Http2Connection>(context_, route_, events);
  }
  const Outcome& outcomeOf(Ticket ticket) {
    EXPECT_TRUE(runUntil(outcomes_.size() + (outcomes_.contains(ticket) ? 0 : 1)));
    return outcomes_.at(ticket);
  }
  // The response code and the number of answer records.
  std::pair<std::uint16_t, std::uint16_t> answerTo(const std::string& name,
                                                   std::uint16_t recordType = type::a) {
    const auto& outcome = outcomeOf(ask(name, recordType));
    if (const auto* problem = std::get_if<std::string>(&outcome)) {
      ADD_FAILURE() << *problem;
      return {};
    }
    const auto message = std::get<Answer>(outcome).toQuery(
        {.question = {.name = wireName(name), .type = recordType}}, std::chrono::seconds(0));
    const auto header = *readHeader(message);
    return {header.rcode(), header.answers};
  }
  std::size_t outcomes() const { return outcomes_.size(); }
  DohEndpointHarness& harness() { return *harness_; }

  static constexpr std::pair<std::uint16_t, std::uint16_t> oneAddress{rcode::noError, 1};

 private:
  static Outcome outcomeOf(std::variant<Fetched, Failure> result, const Question& question) {
    if (const auto* failure = std::get_if<Failure>(&result)) {
      return sentence(*failure);
    }
    auto answer = Answer::parse(std::get<Fetched>(result).message, question, std::get<Fetched>(result).age);
    return std::holds_alternative<Answer>(answer) ? Outcome(std::get<Answer>(std::move(answer)))
                                                  : Outcome("The answer can't be read.");
  }

  std::unique_ptr<DohEndpointHarness> harness_ = GetParam()();
  boost::asio::io_context context_{1};
  SystemBootstrap bootstrap_{context_};
  std::shared_ptr<const Route> route_;
  std::map<Ticket, Outcome> outcomes_;
  Ticket lastTicket_ = 0;
  std::unique_ptr<DohUpstream> upstream_;
};

TEST_P(DohEndpointContract, a_name_has_its_address) { EXPECT_EQ(answerTo("www.site.example"), oneAddress); }

TEST_P(DohEndpointContract, a_name_that_does_not_exist_is_an_answer) {
  EXPECT_EQ(answerTo("www.ads.example").first, rcode::nxDomain);
}

TEST_P(DohEndpointContract, an_unknown_type_is_answered) {
  constexpr std::uint16_t unknownType = 65'280;
  EXPECT_EQ(answerTo("www.site.example", unknownType),
            (std::pair<std::uint16_t, std::uint16_t>(rcode::noError, 0)));
}

TEST_P(DohEndpointContract, the_longest_name_is_answered) {
  const std::string label(63, 'x');
  const auto start = label + '.' + label + '.' + label + '.';
  EXPECT_EQ(answerTo(start + std::string(253 - start.size() - 13, 'y') + ".site.example"), oneAddress);
}

TEST_P(DohEndpointContract, more_questions_than_an_endpoint_takes_at_once_are_all_answered) {
  constexpr std::size_t many = 300;
  for (std::size_t number = 0; number < many; ++number) {
    ask(std::to_string(number) + ".site.example");
  }
  ASSERT_TRUE(runUntil(many));
  for (Ticket ticket = 1; ticket <= many; ++ticket) {
    EXPECT_TRUE(std::holds_alternative<Answer>(outcomeOf(ticket))) << ticket;
  }
}

TEST_P(DohEndpointContract, a_cancelled_question_has_no_outcome_and_others_have) {
  EXPECT_EQ(answerTo("first.site.example"), oneAddress);
  const auto cancelled = ask("cancelled.site.example");
  cancel(cancelled);
  EXPECT_EQ(answerTo("next.site.example"), oneAddress);
  EXPECT_EQ(answerTo("last.site.example"), oneAddress);
  EXPECT_EQ(outcomes(), 3U);
}

TEST_P(DohEndpointContract, a_broken_connection_loses_no_question) {
  EXPECT_EQ(answerTo("first.site.example"), oneAddress);
  harness().breakConnections();
  EXPECT_EQ(answerTo("next.site.example"), oneAddress);
}

TEST_P(DohEndpointContract, a_ping_is_answered) {
  PingingEvents events;
  events.connection = connect(events);
  EXPECT_TRUE(runUntil([&] { return events.hasPong; }));
}

TEST_P(DohEndpointContract, an_unknown_authority_is_rejected) {
  trust("");
  const auto& outcome = outcomeOf(ask("www.site.example"));
  ASSERT_TRUE(std::holds_alternative<std::string>(outcome));
  EXPECT_THAT(std::get<std::string>(outcome),
              testing::StartsWith("The endpoint's certificate can't be verified: "));
}

}  // namespace quillmar::tunnel
