#include "tests/tunnel/device/resolved.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/tunnel/device/tunnel_device.h"

namespace quillmar::tunnel {
namespace {

using namespace test;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr const char* tunnelServer = "198.18.53.53";
constexpr const char* wireServer = "10.9.9.1";
constexpr std::uint16_t llmnrPort = 5355;
constexpr std::uint16_t mdnsPort = 5353;

struct TunnelBehindResolved : TunnelDevice {
  void SetUp() override {
    if (const auto obstacle = Resolved::obstacle(); !obstacle.empty()) {
      GTEST_SKIP() << obstacle;
    }
  }
  void useResolved(const std::string& settings = {}, const std::vector<std::string>& servers = {wireServer}) {
    resolved.emplace(world(), settings);
    EXPECT_TRUE(resolved->asks(servers));
  }
  // Each of the ways in which a program may ask, for a name that nobody has asked for.
  void expectAnswers(const std::string& address) const {
    EXPECT_THAT(resolved->resolve(newName()), HasSubstr(": " + address));
    EXPECT_EQ(askAt(Resolved::stub, newName()), address);
    EXPECT_EQ(askAt(Resolved::stub, newName(), Channel::tcp), address);
    EXPECT_THAT(runCommand({"getent", "ahostsv4", newName()}).output, StartsWith(address));
  }

  std::optional<Resolved> resolved;
};

TEST_F(TunnelBehindResolved, answers_every_way_to_ask) {
  useResolved();
  expectAnswers(Outside::answer);
  EXPECT_THAT(world().seenInClear(), Not(IsEmpty()));
  protect();
  EXPECT_TRUE(resolved->asks({tunnelServer}));
  world().outside().forget();
  expectAnswers(first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelBehindResolved, blocks_a_name_that_was_just_answered) {
  std::atomic<bool> isBlocked = false;
  TestEndpoint filtering([&](TestPeer& peer, std::int32_t stream, const std::string& question) {
    peer.answer(stream, isBlocked ? noSuchName(question) : addressAnswer(question, 7, 0));
  });
  useResolved();
  program = world().run(filtering.caFile());
  readUntil("No connection is to be protected.");
  world().addProfile(filtering.url());
  world().nmcli({"connection", "up", DeviceWorld::profile});
  EXPECT_TRUE(resolved->asks({tunnelServer}));
  EXPECT_EQ(askAt(Resolved::stub, "site.example"), first);
  EXPECT_THAT(resolved->resolve("site.example"), HasSubstr(first));
  isBlocked = true;
  EXPECT_EQ(askAt(Resolved::stub, "site.example"), "code 3");
  EXPECT_THAT(resolved->resolve("site.example"), HasSubstr("'site.example' not found"));
}

TEST_F(TunnelBehindResolved, is_asked_while_it_is_connected_and_not_afterwards) {
  useResolved();
  protect();
  for (int round = 0; round < 3; ++round) {
    EXPECT_TRUE(resolved->asks({tunnelServer}));
    EXPECT_EQ(askAt(Resolved::stub, "site.example"), first);
    EXPECT_THAT(world().seenInClear(), IsEmpty());
    disconnect();
    EXPECT_TRUE(resolved->asks({wireServer}));
    EXPECT_EQ(askAt(Resolved::stub, "site.example"), Outside::answer);
    world().nmcli({"connection", "up", DeviceWorld::profile});
    EXPECT_TRUE(resolved->asks({tunnelServer}));
    world().outside().forget();
  }
}

TEST_F(TunnelBehindResolved, answers_a_resolved_that_was_restarted) {
  useResolved();
  protect();
  EXPECT_TRUE(resolved->asks({tunnelServer}));
  resolved->end();
  resolved->start();
  EXPECT_TRUE(resolved->asks({tunnelServer}));
  expectAnswers(first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelBehindResolved, tells_it_when_its_endpoint_fails) {
  useResolved();
  protect();
  EXPECT_TRUE(resolved->asks({tunnelServer}));
  expectAnswers(first);
  endpoint.speak(TestEndpoint::Speaks::plainText);
  EXPECT_EQ(askAt(Resolved::stub, newName()), "code 2");
  EXPECT_THAT(resolved->resolve(newName()), HasSubstr("SERVFAIL"));
  endpoint.speak(TestEndpoint::Speaks::http2);
  EXPECT_TRUE(endpoint.awaitFreshConnection());
  expectAnswers(first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelBehindResolved, refuses_what_it_asks_while_the_service_is_killed) {
  useResolved();
  protect();
  EXPECT_TRUE(resolved->asks({tunnelServer}));
  EXPECT_EQ(program->end(SIGKILL), -SIGKILL);
  EXPECT_TRUE(resolved->asks({wireServer}));
  EXPECT_THAT(resolved->resolve(newName()), HasSubstr("All attempts to contact name servers"));
  start();
  EXPECT_TRUE(resolved->asks({tunnelServer}));
  expectAnswers(first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

// NetworkManager then leaves it the other connection's server, so it would keep that server's answers.
TEST_F(TunnelBehindResolved, makes_it_forget_what_it_knew_before) {
  world().nmcli({"connection", "modify", "wire", "ipv4.dns-priority", "-200"});
  world().nmcli({"connection", "up", "wire"});
  useResolved();
  EXPECT_THAT(resolved->resolve("known.example"), HasSubstr(Outside::answer));
  world().outside().forget();
  protect();
  EXPECT_THAT(resolved->resolve("known.example"), HasSubstr(first));
  expectAnswers(first);
  EXPECT_TRUE(resolved->asks({wireServer}));
  EXPECT_THAT(world().seenInClear(), IsEmpty());
  world().nmcli({"connection", "modify", "wire", "ipv4.dns-priority", "0"});
}

TEST_F(TunnelBehindResolved, answers_instead_of_servers_in_its_configuration) {
  useResolved("DNS=192.0.2.53\nDomains=~.\n", {server4, wireServer});
  EXPECT_THAT(resolved->resolve("known.example"), HasSubstr(Outside::answer));
  protect();
  EXPECT_TRUE(resolved->asks({server4, tunnelServer}));
  world().outside().forget();
  EXPECT_THAT(resolved->resolve("known.example"), HasSubstr(first));
  expectAnswers(first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelBehindResolved, answers_it_although_it_tries_tls_first) {
  useResolved("DNS=192.0.2.53\nDomains=~.\nDNSOverTLS=opportunistic\n", {server4, wireServer});
  protect();
  EXPECT_TRUE(resolved->asks({server4, tunnelServer}));
  world().outside().forget();
  expectAnswers(first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

// It asks the local network for such names by LLMNR and mDNS.
TEST_F(TunnelBehindResolved, lets_out_no_name_of_the_local_network_over_dns) {
  world().nmcli({"connection", "modify", "wire", "connection.mdns", "yes"});
  world().nmcli({"connection", "up", "wire"});
  useResolved();
  protect();
  EXPECT_TRUE(resolved->asks({tunnelServer}));
  const auto asksByLlmnr = resolved->startResolving("printer");
  const auto asksByMdns = resolved->startResolving("printer.local");
  EXPECT_TRUE(world().outside().seesAsked(llmnrPort, "printer"));
  EXPECT_TRUE(world().outside().seesAsked(mdnsPort, "printer.local"));
  EXPECT_THAT(world().seenInClear(), IsEmpty());
  world().nmcli({"connection", "modify", "wire", "connection.mdns", "default"});
}

TEST_F(TunnelBehindResolved, says_that_no_name_of_the_local_network_exists_without_mdns) {
  useResolved();
  protect();
  EXPECT_TRUE(resolved->asks({tunnelServer}));
  EXPECT_THAT(resolved->resolve("printer.local"), HasSubstr("'printer.local' not found"));
  EXPECT_EQ(askAt(Resolved::stub, "printer.local"), "code 3");
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

// As some administrators have it.
TEST_F(TunnelBehindResolved, answers_a_single_label_that_it_asks_over_dns) {
  useResolved("ResolveUnicastSingleLabel=yes\nLLMNR=no\n");
  protect();
  EXPECT_TRUE(resolved->asks({tunnelServer}));
  EXPECT_EQ(askAt(Resolved::stub, "printer"), first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

}  // namespace
}  // namespace quillmar::tunnel
