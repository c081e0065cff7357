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
  std::vector<std::string> find(const std::string& url = "https://doh.example/q") {
    std::optional<std::vector<std::string>> found;
    bootstrap.find(*parseEndpoint(url), [&](auto error, const TcpEndpoints& endpoints) {
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
                          },
                          [this](const ip::address& address) { return hasRoute(address); }};
  std::function<bool(const ip::address&)> hasRoute = [](const ip::address&) { return true; };
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

// A network with IPv6 alone. Its server has these addresses for ipv4only.arpa, and only an IPv4 address for
// the endpoint.
struct TunnelOnIpv6Alone : TunnelLinkBootstrap {
  TunnelOnIpv6Alone() {
    hasRoute = [](const ip::address& address) { return address.is_v6(); };
  }
  NameServer::Answering with(std::vector<std::string> ofIpv4OnlyHost) {
    return [ofIpv4OnlyHost = std::move(ofIpv4OnlyHost)](const Query& query) {
      if (query.question.name == wireName("doh.example")) {
        return query.question.type == type::a ? addresses(query)
                                              : std::vector{reply({.type = type::aaaa, .answers = {}})};
      }
      EXPECT_EQ(query.question.name, wireName("ipv4only.arpa"));
      AnswerText text{.name = "ipv4only.arpa", .type = query.question.type, .answers = {}};
      if (query.question.type == type::a) {
        text.answers.push_back({.data = "\xc0\x00\x00\xaa"s});
      } else {
        for (const auto& address : ofIpv4OnlyHost) {
          const auto bytes = ip::make_address_v6(address).to_bytes();
          text.answers.push_back({.type = type::aaaa, .data = std::string(bytes.begin(), bytes.end())});
        }
      }
      return std::vector{answerText(text)};
    };
  }
};

TEST_F(TunnelOnIpv6Alone, translates_the_endpoints_address) {
  const NameServer server(with({"64:ff9b::192.0.0.170", "64:ff9b::192.0.0.171"}));
  servers = {server.endpoint};
  EXPECT_THAT(find(), ElementsAre("192.0.2.7", "64:ff9b::c000:207"));
  EXPECT_EQ(server.questions, 4);
  EXPECT_THAT(find(), ElementsAre("192.0.2.7", "64:ff9b::c000:207"));
  EXPECT_EQ(server.questions, 4) << "it is known";
  bootstrap.missed(*parseEndpoint("https://doh.example/q"));
  EXPECT_THAT(find(), ElementsAre("192.0.2.7", "64:ff9b::c000:207"));
  EXPECT_EQ(server.questions, 8) << "on another network, maybe";
}

TEST_F(TunnelOnIpv6Alone, translates_an_address_in_the_url) {
  const NameServer server(with({"2001:db8:122:344:c0::aa00:0"}));
  servers = {server.endpoint};
  EXPECT_THAT(find("https://192.0.2.33/q"), ElementsAre("192.0.2.33", "2001:db8:122:344:c0:2:2100:0"));
  EXPECT_THAT(find("https://[2001:db8::7]/q"), ElementsAre("2001:db8::7"));
}

TEST_F(TunnelOnIpv6Alone, keeps_the_address_that_was_translated) {
  const NameServer server(with({"64:ff9b::192.0.0.170"}));
  servers = {server.endpoint};
  find();
  reach("64:ff9b::c000:207");
  EXPECT_THAT(kept, ElementsAre("doh.example 192.0.2.7"));
}

TEST_F(TunnelOnIpv6Alone, translates_nothing_without_a_prefix) {
  for (const auto& none : std::vector<std::vector<std::string>>{
           {}, {"2001:db8::1"}, {"::ffff:192.0.0.170"}, {"::192.0.0.170"}, {"fe80::192.0.0.170"}}) {
    const NameServer server(with(none));
    servers = {server.endpoint};
    EXPECT_THAT(find(), ElementsAre("192.0.2.7"));
    bootstrap.missed(*parseEndpoint("https://doh.example/q"));
  }
}

TEST_F(TunnelOnIpv6Alone, asks_no_more_than_it_has_to) {
  const NameServer server(with({"64:ff9b::192.0.0.170"}));
  servers = {server.endpoint};
  hasRoute = [](const ip::address&) { return true; };
  EXPECT_THAT(find(), ElementsAre("192.0.2.7"));
  hasRoute = [](const ip::address&) { return false; };
  EXPECT_THAT(find(), ElementsAre("192.0.2.7")) << "on no network at all";
  EXPECT_EQ(server.questions, 2);
}

// The table of RFC 6052, 2.4.
const std::vector<std::pair<std::string, std::size_t>> prefixes{
    {"2001:db8::", 4},         {"2001:db8:100::", 5},     {"2001:db8:122::", 6},
    {"2001:db8:122:300::", 7}, {"2001:db8:122:344::", 8}, {"2001:db8:122:344::", 12}};

Nat64Prefix prefixOf(const std::pair<std::string, std::size_t>& written) {
  return {ip::make_address_v6(written.first).to_bytes(), written.second};
}

TEST(TunnelNat64, writes_an_address_behind_prefixes_of_each_length) {
  const auto address = ip::make_address_v4("192.0.2.33");
  std::vector<std::string> all;
  for (const auto& prefix : prefixes) {
    all.push_back(translated(prefixOf(prefix), address)->to_string());
  }
  EXPECT_THAT(all, ElementsAre("2001:db8:c000:221::", "2001:db8:1c0:2:21::", "2001:db8:122:c000:2:2100::",
                               "2001:db8:122:3c0:0:221::", "2001:db8:122:344:c0:2:2100:0",
                               "2001:db8:122:344::c000:221"));
}

TEST(TunnelNat64, finds_prefixes_of_each_length) {
  for (const auto& prefix : prefixes) {
    for (const auto* known : {"192.0.0.170", "192.0.0.171"}) {
      const auto shown = *translated(prefixOf(prefix), ip::make_address_v4(known));
      EXPECT_THAT(nat64Prefixes({shown}), ElementsAre(prefixOf(prefix))) << shown;
    }
  }
}

TEST(TunnelNat64, finds_no_prefix_elsewhere) {
  for (const auto* address :
       {"192.0.0.170", "::", "::1", "2001:db8::192.0.0.169", "2001:db8::192.0.0.172", "::ffff:192.0.0.170",
        "::192.0.0.170", "fe80::192.0.0.170", "ff0e::192.0.0.170", "2001:db8:c000:aa::1",
        "2001:db8:122:344:ffc0:0:aa00:0", "2001:db8:c0::aa00:0:0:0"}) {
    EXPECT_THAT(nat64Prefixes({ip::make_address(address)}), IsEmpty()) << address;
  }
}

TEST(TunnelNat64, keeps_each_prefix_once_and_only_a_few) {
  std::vector<ip::address> shown;
  for (int number = 0; number < 100; ++number) {
    shown.push_back(ip::make_address("2001:db8:" + std::to_string(number / 2) + "::192.0.0.170"));
  }
  const auto found = nat64Prefixes(shown);
  ASSERT_THAT(found, testing::SizeIs(mostNat64Prefixes));
  EXPECT_EQ(ip::address_v6(found.back().bytes), ip::make_address_v6("2001:db8:3::"));
}

TEST(TunnelNat64, does_not_translate_what_is_near) {
  for (const auto* near : {"127.0.0.1", "0.0.0.0", "224.0.0.1", "169.254.1.1"}) {
    EXPECT_FALSE(translated(prefixOf(prefixes.back()), ip::make_address_v4(near))) << near;
  }
}

TEST(TunnelNat64, sees_a_route_without_sending_anything) {
  EXPECT_TRUE(hasRouteTo(ip::make_address("127.0.0.1")));
  EXPECT_FALSE(hasRouteTo(ip::make_address("255.255.255.255"))) << "not for everybody";
}

}  // namespace
}  // namespace quillmar::tunnel
