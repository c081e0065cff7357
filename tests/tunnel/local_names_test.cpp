#include "tunnel/resolver/local_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tunnel/support/messages.h"
#include "tunnel/link/constants.h"

namespace quillmar::tunnel {
namespace {

using namespace test;
using testing::ContainsRegex;
using testing::HasSubstr;

std::optional<std::string> localReplyTo(std::string_view message) {
  const auto query = std::get<Query>(parseQuery(message));
  std::string name;
  appendLowerCased(name, query.question.name);
  return localReply(query, name);
}

std::string readOf(const QueryText& text) {
  const auto reply = localReplyTo(queryText(text));
  return reply ? readByLdns(*reply) : "goes out";
}
std::string read(const std::string& name, std::uint16_t recordType = type::a) {
  return readOf({.name = name, .type = recordType});
}

TEST(TunnelLocalNames, localhost_has_the_loopback_addresses) {
  for (const auto* name : {"localhost", "LocalHost", "a.b.localhost"}) {
    EXPECT_THAT(read(name), ContainsRegex("IN[[:space:]]+A[[:space:]]+127\\.0\\.0\\.1")) << name;
    EXPECT_THAT(read(name, type::aaaa), ContainsRegex("IN[[:space:]]+AAAA[[:space:]]+::1")) << name;
    EXPECT_THAT(read(name, 16), HasSubstr("rcode: NOERROR"));
    EXPECT_THAT(read(name, 16), HasSubstr("ANSWER: 0, AUTHORITY: 1"));
  }
}

// The address shows that this program was asked, so it must not be cached.
TEST(TunnelLocalNames, the_program_itself_is_at_the_tunnels_address_and_is_not_kept) {
  const std::string address(tunnelAddress4);
  EXPECT_THAT(read("tunnel.quillmar.live"),
              ContainsRegex("[[:space:]]0[[:space:]]+IN[[:space:]]+A[[:space:]]+" + address));
  EXPECT_THAT(read("tunnel.quillmar.live", type::aaaa), HasSubstr("rcode: NOERROR"));
  EXPECT_THAT(read("tunnel.quillmar.live", type::aaaa), HasSubstr("ANSWER: 0, AUTHORITY: 1"));
  EXPECT_THAT(read("x.tunnel.quillmar.live"), HasSubstr("rcode: NXDOMAIN"));
  EXPECT_EQ(read("quillmar.live"), "goes out");
}

TEST(TunnelLocalNames, names_below_local_zones_do_not_exist) {
  for (const auto* name :
       {"invalid", "www.invalid", "x.onion", "printer.local", "nas.home.arpa", "use-application-dns.net",
        "1.1.10.in-addr.arpa", "7.0.168.192.in-addr.arpa", "1.0.16.172.in-addr.arpa",
        "1.0.31.172.in-addr.arpa", "1.0.64.100.in-addr.arpa", "1.0.127.100.in-addr.arpa",
        "1.0.0.127.in-addr.arpa", "9.9.254.169.in-addr.arpa", "1.d.f.ip6.arpa", "f.a.e.f.ip6.arpa"}) {
    EXPECT_THAT(read(name), HasSubstr("rcode: NXDOMAIN")) << name;
    EXPECT_THAT(read(name), ContainsRegex("[[:space:]]10[[:space:]]+IN[[:space:]]+SOA")) << name;
  }
}

TEST(TunnelLocalNames, local_zones_themselves_exist_and_are_empty) {
  for (const auto* name : {"home.arpa", "10.in-addr.arpa", "resolver.arpa", "_dns.resolver.arpa"}) {
    EXPECT_THAT(read(name), HasSubstr("rcode: NOERROR")) << name;
    EXPECT_THAT(read(name), HasSubstr("ANSWER: 0, AUTHORITY: 1")) << name;
  }
}

TEST(TunnelLocalNames, other_names_are_sent_to_the_endpoint) {
  for (const auto* name :
       {"", "www.example.org", "localhost.example.org", "notlocalhost", "mylocal", "arpa", "in-addr.arpa",
        "15.172.in-addr.arpa", "32.172.in-addr.arpa", "63.100.in-addr.arpa", "128.100.in-addr.arpa",
        "172.in-addr.arpa", "110.in-addr.arpa", "8.8.8.8.in-addr.arpa", "application-dns.net", "net"}) {
    EXPECT_EQ(read(name), "goes out") << name;
  }
  EXPECT_EQ(readOf({.name = "localhost", .klass = 3}), "goes out") << "another class";
}

TEST(TunnelLocalNames, a_dot_within_a_label_is_no_separator) {
  auto message = queryText({.name = "xlocal"});
  message[headerSize + 1] = '.';
  EXPECT_FALSE(localReplyTo(message));
}

TEST(TunnelLocalNames, ds_records_of_a_local_zone_are_sent_to_the_endpoint) {
  EXPECT_EQ(read("home.arpa", type::ds), "goes out");
  EXPECT_THAT(read("nas.home.arpa", type::ds), HasSubstr("rcode: NXDOMAIN"));
}

TEST(TunnelLocalNames, a_query_with_an_opt_record_is_answered_with_one) {
  EXPECT_THAT(readOf({.name = "localhost", .payload = 1232}), HasSubstr("EDNS: version 0"));
}

}  // namespace
}  // namespace quillmar::tunnel
