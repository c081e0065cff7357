#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <utility>

#include "tests/sandbox/support/datagram_server.h"
#include "tests/tunnel/support/messages.h"
#include "tunnel/dns/address_records.h"
#include "tunnel/network/link_bootstrap.h"

namespace quillmar::tunnel {
namespace {

using namespace test;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
namespace ip = boost::asio::ip;

const Question asked{.name = wireName("doh.example"), .type = type::a};

std::string reply(AnswerText text) {
  text.name = "doh.example";
  return answerText(text);
}

TEST(TunnelAddressRecords, are_those_of_the_requested_type) {
  const RecordText alias{.type = 5, .ttl = 20, .data = wireName("other.example")};
  const auto read =
      readAddressRecords(reply({.answers = {alias, {}, {.ttl = 30, .data = "\x01\x02\x03\x04"s}}}), asked);
  ASSERT_TRUE(read);
  EXPECT_THAT(read->addresses, ElementsAre("\xc0\x00\x02\x07"s, "\x01\x02\x03\x04"s));
  EXPECT_EQ(read->life, 20s) << "of the alias, too";
}

TEST(TunnelAddressRecords, may_be_none) {
  for (const auto code : {rcode::noError, rcode::nxDomain}) {
    const auto read = readAddressRecords(reply({.rcode = code, .answers = {}}), asked);
    ASSERT_TRUE(read);
    EXPECT_THAT(read->addresses, IsEmpty());
    EXPECT_EQ(read->life, 0s);
  }
}

TEST(TunnelAddressRecords, are_not_taken_from_an_answer_to_another_question) {
  EXPECT_FALSE(readAddressRecords("", asked));
  EXPECT_FALSE(readAddressRecords(reply({.rcode = rcode::servFail}), asked));
  EXPECT_FALSE(readAddressRecords(answerText({.name = "else.example"}), asked));
  EXPECT_FALSE(readAddressRecords(reply({.type = type::aaaa}), asked));
  EXPECT_FALSE(readAddressRecords(queryText({.name = "doh.example"}), asked)) << "no answer";
  const auto whole = reply({});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(readAddressRecords(whole.substr(0, size), asked)) << size;
  }
  EXPECT_TRUE(readAddressRecords(whole, asked));
}

TEST(TunnelAddressRecords, of_the_wrong_size_are_ignored) {
  const auto read = readAddressRecords(reply({.answers = {{.data = "\x01\x02\x03"s}}}), asked);
  ASSERT_TRUE(read);
  EXPECT_THAT(read->addresses, IsEmpty());
}

TEST(TunnelAddressRecords, are_requested_for_valid_names_only) {
  EXPECT_EQ(queryFor("doh.example", type::a)->question.name, wireName("doh.example"));
  EXPECT_EQ(queryFor("doh.example.", type::a)->question.name, wireName("doh.example"));
  for (const auto& name :
       {""s, "."s, "a..b"s, ".a"s, "a.."s, std::string(64, 'x') + ".example", std::string(254, 'x')}) {
    EXPECT_FALSE(queryFor(name, type::a)) << name;
  }
  EXPECT_TRUE(queryFor(std::string(63, 'x') + ".example", type::a));
}

// A plain DNS server on this machine. It sends the given answers with the query's id.
class NameServer {
 public:
  using Answering = std::function<std::vector<std::string>(const Query&)>;

  explicit NameServer(Answering answering) : answering_(std::move(answering)) {}

  std::atomic<int> questions = 0;

 private:
  std::vector<std::string> answer(std::string_view received) {
    const auto query = std::get<Query>(parseQuery(received));
    ++questions;
    auto replies = answering_(query);
    for (auto& reply : replies) {
      put16(reply, 0, static_cast<std::uint16_t>(get16(reply, 0) ^ query.id));
    }
    return replies;
  }

  const Answering answering_;
  sandbox::test::DatagramServer server_{[this](std::string_view received) { return answer(received); }};

 public:
  const ip::udp::endpoint endpoint{ip::address_v4::loopback(), static_cast<std::uint16_t>(server_.port())};
};

std::vector<std::string> addresses(const Query& query) {
  const bool is6 = query.question.type == type::aaaa;
  return {reply({.type = query.question.type,
                 .answers = {{.type = query.question.type,
                              .data = is6 ? "\x20\x01\x0d\xb8"s + std::string(11, '\0') + '\x01'
                                          : "\xc0\x00\x02\x07"s}}})};
}
std::vector<std::string> failure(const Query& query) {
  return {reply({.type = query.question.type, .rcode = rcode::servFail, .answers = {}})};
}
std::vector<std::string> silence(const Query& /*query*/) { return {}; }

struct TunnelLinkBootstrap : testing::Test {
  // Returns the addresses that were found, as text.
  std::vector<std::string> find() {
    std::optional<std::vector<std::string>> found;
    bootstrap.find(*parseEndpoint("https://doh.example/q"), [&](auto error, const TcpEndpoints& endpoints) {
      found.emplace();
      EXPECT_EQ(static_cast<bool>(error), endpoints.empty());
      for (const auto& endpoint : endpoints) {
        EXPECT_EQ(endpoint.port(), 443);
        found->push_back(endpoint.address().to_string());
      }
    });
    while (!found && context.run_one() > 0) {
    }
    context.restart();
    return found.value_or(std::vector<std::string>{"nothing was said"});
  }
  void reach(const std::string& address) {
    bootstrap.reached(*parseEndpoint("https://doh.example/q"), ip::make_address(address));
  }

  boost::asio::io_context context{1};
  NameServers servers;
  std::vector<std::string> kept;
  LinkBootstrap bootstrap{context,
                          [this](const auto& take) { take(servers); },
                          {},
                          [this](const std::string& host, const ip::address& address) {
                            kept.push_back(host + ' ' + address.to_string());
                          }};
};

TEST_F(TunnelLinkBootstrap, asks_for_both_families_and_remembers) {
  const NameServer server(addresses);
  servers = {server.endpoint};
  EXPECT_THAT(find(), ElementsAre("2001:db8::1", "192.0.2.7"));
  EXPECT_EQ(server.questions, 2);
  EXPECT_THAT(find(), ElementsAre("2001:db8::1", "192.0.2.7"));
  EXPECT_EQ(server.questions, 2);
  bootstrap.missed(*parseEndpoint("https://doh.example/q"));
  EXPECT_THAT(find(), ElementsAre("2001:db8::1", "192.0.2.7"));
  EXPECT_EQ(server.questions, 4);
}

TEST_F(TunnelLinkBootstrap, asks_the_next_server_when_one_is_silent_or_fails) {
  const NameServer good(addresses);
  for (const auto& bad : {silence, failure}) {
    const NameServer server(bad);
    servers = {server.endpoint, good.endpoint};
    EXPECT_THAT(find(), ElementsAre("2001:db8::1", "192.0.2.7"));
    bootstrap.missed(*parseEndpoint("https://doh.example/q"));
  }
}

TEST_F(TunnelLinkBootstrap, uses_one_family_if_the_other_is_not_answered) {
  const NameServer server(
      [](const Query& query) { return query.question.type == type::a ? addresses(query) : silence(query); });
  servers = {server.endpoint};
  EXPECT_THAT(find(), ElementsAre("192.0.2.7"));
}

TEST_F(TunnelLinkBootstrap, ignores_answers_to_other_questions) {
  const NameServer server([](const Query& query) {
    auto wrongId = addresses(query)[0];
    put16(wrongId, 0, 1);  // differs in one bit
    return std::vector{wrongId, answerText({.name = "else.example", .type = query.question.type}),
                       addresses(query)[0]};
  });
  servers = {server.endpoint};
  EXPECT_THAT(find(), ElementsAre("2001:db8::1", "192.0.2.7"));
}

TEST_F(TunnelLinkBootstrap, falls_back_on_the_last_good_address) {
  EXPECT_THAT(find(), IsEmpty());
  reach("198.51.100.1");
  reach("198.51.100.1");
  EXPECT_THAT(kept, ElementsAre("doh.example 198.51.100.1"));
  EXPECT_THAT(find(), ElementsAre("198.51.100.1"));
  const NameServer server(addresses);
  servers = {server.endpoint};
  EXPECT_THAT(find(), ElementsAre("2001:db8::1", "192.0.2.7", "198.51.100.1")) << "last";
}

}  // namespace
}  // namespace quillmar::tunnel
