#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>

#include "child/vpn_dns_manager.h"
#include "programs/doctor/tunnel_state.h"
#include "tests/tunnel/device/tunnel_device.h"

namespace quillmar::tunnel {
namespace {

using namespace test;
using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

TEST_F(TunnelDevice, sends_dns_in_clear_without_protection) {
  EXPECT_EQ(askAt(server4, "a.example"), Outside::answer);
  EXPECT_EQ(askAt(server6, "b.example"), Outside::answer);
  askAt(server4, "c.example", Channel::tcp);
  askAt(server4, "d.example", Channel::tcp, 853);
  EXPECT_THAT(world().seenInClear(),
              testing::IsSupersetOf({"udp 53 a.example", "udp 53 b.example", "tcp 53", "tcp 853"}));
}

TEST_F(TunnelDevice, asks_its_endpoint_for_every_program) {
  protect();
  EXPECT_TRUE(DeviceWorld::resolvConfBecomes("nameserver 198.18.53.53\n"));
  EXPECT_THAT(runCommand({"getent", "ahostsv4", newName()}).output, StartsWith(first));
  for (const auto* server : {server4, server6, "10.9.9.1", "2001:db8:9::1"}) {
    for (const auto channel : {Channel::udp, Channel::tcp}) {
      EXPECT_EQ(askAt(server, newName(), channel), first) << server;
    }
  }
  EXPECT_EQ(askAt("fe80::1%v0", newName()), "refused");
  for (const auto* server : {server4, server6}) {
    for (const auto channel : {Channel::udp, Channel::tcp}) {
      EXPECT_EQ(askAt(server, newName(), channel, 853), "refused") << server;
    }
  }
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

// For example a container whose default route leads through this machine.
TEST_F(TunnelDevice, redirects_dns_that_it_routes_for_others) {
  ASSERT_EQ(
      runCommand(
          {"sh", "-ec",
           "ip netns add container; ip link add c0 type veth peer name c1 netns container; "
           "ip address add 10.8.8.1/24 dev c0; ip link set c0 up; echo 1 >/proc/sys/net/ipv4/ip_forward; "
           "ip netns exec container sh -ec 'ip link set c1 up; ip address add 10.8.8.2/24 dev c1; "
           "ip route add default via 10.8.8.1'"})
          .status,
      0);
  const auto ask = [](const std::string& how) {
    return runCommand({"ip", "netns", "exec", "container", "kdig", "@192.0.2.53", "+retry=0", "+time=1", how,
                       newName()})
        .output;
  };
  ask("+notcp");
  EXPECT_THAT(world().seenInClear(), Not(IsEmpty())) << "without protection";
  protect();
  world().outside().forget();
  EXPECT_THAT(ask("+notcp"), HasSubstr(first));
  EXPECT_THAT(ask("+tcp"), HasSubstr(first));
  EXPECT_THAT(ask("+tls"), Not(HasSubstr("NOERROR")));
  EXPECT_EQ(program->end(SIGKILL), -SIGKILL);
  EXPECT_THAT(ask("+notcp"), Not(HasSubstr("NOERROR")));
  EXPECT_THAT(ask("+tcp"), Not(HasSubstr("NOERROR")));
  EXPECT_THAT(world().seenInClear(), IsEmpty());
  EXPECT_EQ(runCommand({"sh", "-ec", "ip link delete c0; ip netns delete container"}).status, 0);
}

TEST_F(TunnelDevice, redirects_a_flow_that_began_before) {
  start();
  readUntil("No connection is to be protected.");
  // A firewall makes the kernel track connections from here on.
  EXPECT_EQ(runCommand(
                {"nft", "-f", "-"},
                "table inet others {\n chain out {\n type filter hook output priority 0\n"
                "ct state established accept\n }\n chain nat {\n type nat hook output priority -100\n }\n}\n")
                .status,
            0);
  DnsClient client(server4, Channel::udp);
  EXPECT_EQ(client.ask("before.example"), DnsClient::Outcome::answered);
  EXPECT_EQ(client.said(), Outside::answer);
  world().addProfile(endpoint.url());
  world().nmcli({"connection", "up", DeviceWorld::profile});
  EXPECT_EQ(client.ask("during.example"), DnsClient::Outcome::answered);
  EXPECT_EQ(client.said(), first);
  disconnect();
  EXPECT_EQ(client.ask("after.example"), DnsClient::Outcome::answered);
  EXPECT_EQ(client.said(), Outside::answer);
  EXPECT_THAT(world().seenInClear(),
              AllOf(Not(testing::Contains(HasSubstr("during"))), testing::Contains(HasSubstr("after"))));
  EXPECT_EQ(runCommand({"nft", "delete", "table", "inet", "others"}).status, 0);
}

TEST_F(TunnelDevice, activates_its_connection_at_start) {
  world().addProfile(endpoint.url());
  const auto changes = world().addressChanges();
  start();
  EXPECT_THAT(changes->readUntil("198.18.53.53"), HasSubstr("198.18.53.53"));
  EXPECT_EQ(askAt(server4, newName()), first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelDevice, does_not_activate_a_disabled_connection) {
  world().addProfile(endpoint.url());
  world().nmcli({"connection", "modify", DeviceWorld::profile, "connection.autoconnect", "no"});
  start();
  readUntil("No connection is to be protected.");
  EXPECT_THAT(rules(), IsEmpty());
}

TEST_F(TunnelDevice, changes_its_endpoint_without_a_gap) {
  TestEndpoint other(always(8));
  std::ofstream(world().file("both.pem"))
      << std::ifstream(endpoint.caFile()).rdbuf() << std::ifstream(other.caFile()).rdbuf();
  program = world().run(world().file("both.pem").string());
  readUntil("No connection is to be protected.");
  world().addProfile(endpoint.url());
  world().nmcli({"connection", "up", DeviceWorld::profile});
  EXPECT_EQ(askAt(server4, "kept.example"), first);

  std::atomic<bool> changed = false;
  std::vector<std::string> answers;
  std::thread asking([&] {
    // A new thread is in the network namespace of the thread that starts it.
    for (int count = 0; answers.empty() || answers.back() == first; ++count) {
      answers.push_back(askAt(server4, "gap" + std::to_string(count) + ".example"));
    }
    changed = true;
  });
  world().changeEndpoint(other.url());
  asking.join();
  EXPECT_TRUE(changed);
  EXPECT_EQ(answers.back(), second);
  EXPECT_EQ(askAt(server4, "kept.example"), second) << "the cache is emptied";
  EXPECT_THAT(readUntil("Asks localhost:" + std::to_string(other.port())), Not(HasSubstr("secret-token")));
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelDevice, keeps_its_endpoint_when_the_new_one_is_invalid) {
  protect();
  world().changeEndpoint("http://doh.example/");
  readUntil("no https URL as its dohEndpoint any more");
  EXPECT_EQ(askAt(server4, newName()), first);
}

TEST_F(TunnelDevice, refuses_a_connection_without_an_endpoint) {
  start();
  readUntil("No connection is to be protected.");
  world().addProfile("http://doh.example/");
  EXPECT_NE(world().tryNmcli({"connection", "up", DeviceWorld::profile}).status, 0);
  readUntil("The connection has no https URL as its dohEndpoint.");
  EXPECT_THAT(rules(), IsEmpty());
}

TEST_F(TunnelDevice, connects_and_disconnects_ten_times) {
  protect();
  for (int round = 0; round < 10; ++round) {
    EXPECT_EQ(askAt(server4, newName()), first);
    EXPECT_THAT(world().seenInClear(), IsEmpty());
    disconnect();
    EXPECT_THAT(rules(), IsEmpty());
    EXPECT_NE(runCommand({"ip", "link", "show", "quillmar0"}).status, 0);
    world().nmcli({"connection", "up", DeviceWorld::profile});
  }
}

TEST_F(TunnelDevice, outlives_its_link) {
  protect();
  EXPECT_EQ(runCommand({"ip", "link", "set", "v0", "down"}).status, 0);
  EXPECT_EQ(askAt("198.18.53.53", newName()), first) << "the endpoint is on this machine";
  EXPECT_EQ(runCommand({"ip", "link", "set", "v0", "up"}).status, 0);
  world().nmcli({"connection", "up", "wire"});
  EXPECT_EQ(askAt(server4, newName()), first);
  EXPECT_THAT(world().nmcli({"-g", "NAME", "connection", "show", "--active"}),
              HasSubstr(DeviceWorld::profile));
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelDevice, answers_without_networkmanager_and_reconnects_when_it_returns) {
  protect();
  world().stopManager();
  readUntil("NetworkManager went away.");
  EXPECT_EQ(askAt(server4, newName()), first);
  EXPECT_EQ(askAt(server6, newName()), first);
  world().startManager();
  readUntil("Protects this machine.");
  EXPECT_EQ(askAt(server4, newName()), first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
  world().nmcli({"connection", "up", "wire"});
  disconnect();
  EXPECT_THAT(rules(), IsEmpty());
}

TEST_F(TunnelDevice, outlives_a_networkmanager_that_is_killed) {
  protect();
  world().stopManager(SIGKILL);
  readUntil("NetworkManager went away.");
  EXPECT_EQ(askAt(server4, newName()), first);
  world().startManager();
  readUntil("Protects this machine.");
  EXPECT_EQ(askAt(server4, newName()), first);
  EXPECT_EQ(askAt(server6, newName()), first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
  world().nmcli({"connection", "up", "wire"});
}

TEST_F(TunnelDevice, protects_a_link_with_ipv6_alone) {
  world().nmcli({"connection", "modify", "wire", "ipv4.method", "disabled", "ipv4.addresses", "",
                 "ipv4.gateway", "", "ipv4.dns", ""});
  world().nmcli({"connection", "up", "wire"});
  EXPECT_EQ(askAt(server6, "clear.example"), Outside::answer);
  protect();
  EXPECT_TRUE(DeviceWorld::resolvConfBecomes("nameserver 198.18.53.53\n"));
  EXPECT_THAT(runCommand({"getent", "ahostsv4", newName()}).output, StartsWith(first));
  for (const auto channel : {Channel::udp, Channel::tcp}) {
    EXPECT_EQ(askAt(server6, newName(), channel), first);
    EXPECT_EQ(askAt(server6, newName(), channel, 853), "refused");
  }
  // Otherwise the connection would be up with the addresses of one family.
  world().nmcli({"connection", "modify", "wire", "ipv4.method", "manual", "ipv4.addresses", "10.9.9.2/24",
                 "ipv4.gateway", "10.9.9.1", "ipv4.dns", "10.9.9.1", "ipv4.may-fail", "no", "ipv6.may-fail",
                 "no"});
  world().nmcli({"connection", "up", "wire"});
  EXPECT_THAT(world().seenInClear(), testing::ElementsAre("udp 53 clear.example"));
  world().nmcli({"connection", "modify", "wire", "ipv4.may-fail", "yes", "ipv6.may-fail", "yes"});
}

// NetworkManager then gives programs the other connection's name server.
TEST_F(TunnelDevice, is_not_displaced_by_a_connection_with_a_lower_priority) {
  world().nmcli({"connection", "modify", "wire", "ipv4.dns-priority", "-200"});
  world().nmcli({"connection", "up", "wire"});
  protect();
  EXPECT_TRUE(DeviceWorld::resolvConfBecomes("nameserver 10.9.9.1\n"));
  EXPECT_THAT(runCommand({"getent", "ahostsv4", newName()}).output, StartsWith(first));
  EXPECT_THAT(world().seenInClear(), IsEmpty());
  world().nmcli({"connection", "modify", "wire", "ipv4.dns-priority", "0"});
}

TEST_F(TunnelDevice, activates_its_connection_as_soon_as_there_is_a_link) {
  world().addProfile(endpoint.url());
  world().nmcli({"connection", "down", "wire"});
  const auto changes = world().addressChanges();
  start();
  readUntil("NetworkManager is there.");
  EXPECT_THAT(rules(), IsEmpty());
  world().nmcli({"connection", "up", "wire"});
  EXPECT_THAT(changes->readUntil("198.18.53.53"), HasSubstr("198.18.53.53"));
  EXPECT_EQ(askAt(server4, newName()), first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelDevice, answers_again_when_its_worker_hangs) {
  protect();
  EXPECT_EQ(askAt(server4, newName()), first);
  const auto hanging = worker();
  ASSERT_GT(hanging, 0);
  EXPECT_EQ(::kill(hanging, SIGSTOP), 0);
  EXPECT_EQ(askAt(server4, newName()), first);
  readUntil("The worker does not answer: it is ended.");
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelDevice, refuses_dns_when_it_is_killed_until_it_is_released) {
  protect();
  DnsClient before(server4, Channel::udp);
  EXPECT_EQ(before.ask(newName()), DnsClient::Outcome::answered);
  EXPECT_EQ(program->end(SIGKILL), -SIGKILL);
  EXPECT_EQ(before.ask(newName()), DnsClient::Outcome::refused);
  for (const auto* server : {server4, server6, "10.9.9.1", "198.18.53.53"}) {
    for (const auto channel : {Channel::udp, Channel::tcp}) {
      EXPECT_EQ(askAt(server, newName(), channel), "refused") << server;
    }
  }
  EXPECT_THAT(world().seenInClear(), IsEmpty());
  EXPECT_EQ(world().tunnel({"release"}).status, 0);
  EXPECT_THAT(rules(), IsEmpty());
  EXPECT_EQ(askAt(server4, newName()), Outside::answer);
  EXPECT_EQ(world().tunnel({"release"}).status, 0) << "once more is no problem";
  program.reset();
}

TEST_F(TunnelDevice, cages_its_worker) {
  protect();
  EXPECT_EQ(askAt(server4, newName()), first);
  const auto shown = textOf("/proc/" + std::to_string(worker()) + "/status");
  EXPECT_THAT(shown, HasSubstr("\nUid:\t60853\t60853\t60853\t60853\n"));
  EXPECT_THAT(shown, HasSubstr("\nCapEff:\t0000000000000000\n"));
  EXPECT_THAT(shown, HasSubstr("\nCapBnd:\t0000000000000000\n"));
  EXPECT_THAT(shown, HasSubstr("\nNoNewPrivs:\t1\n"));
}

TEST_F(TunnelDevice, runs_its_worker_as_the_user_that_is_made_for_it) {
  std::ofstream("/etc/passwd", std::ios::app) << "quillmar-tunnel:x:977:978::/:/usr/sbin/nologin\n";
  protect();
  EXPECT_EQ(askAt(server4, newName()), first);
  const auto shown = textOf("/proc/" + std::to_string(worker()) + "/status");
  EXPECT_THAT(shown, AllOf(HasSubstr("\nUid:\t977\t"), HasSubstr("\nGid:\t978\t")));
  EXPECT_THAT(rules(), AllOf(HasSubstr("skuid 977 "), Not(HasSubstr("60853"))));
  EXPECT_EQ(runCommand({"sed", "-i", "/^quillmar-tunnel:/d", "/etc/passwd"}).status, 0);
}

TEST_F(TunnelDevice, lets_only_its_worker_out) {
  protect();
  const auto ask = [](const std::string& user) {
    return runCommand({"setpriv", "--reuid", user, "--regid", user, "--clear-groups", "kdig", "@192.0.2.53",
                       "+retry=0", "+time=1", newName()})
        .output;
  };
  for (const auto* user : {"0", "65534", "60852"}) {
    EXPECT_THAT(ask(user), HasSubstr(first)) << user;
  }
  EXPECT_THAT(world().seenInClear(), IsEmpty());
  EXPECT_THAT(ask("60853"), HasSubstr(Outside::answer));
}

TEST_F(TunnelDevice, answers_again_when_its_worker_was_killed) {
  protect();
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(askAt(server4, newName()), first);
    ASSERT_NO_FATAL_FAILURE(killWorker());
    for (const auto channel : {Channel::udp, Channel::tcp}) {
      EXPECT_EQ(askAt(server4, newName(), channel), first);
    }
    readUntil("The worker was killed by signal 9; it is started again.");
  }
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelDevice, ends_its_worker_when_it_is_killed) {
  protect();
  const auto process = openProcess(worker());
  EXPECT_EQ(program->end(SIGKILL), -SIGKILL);
  awaitDeath(process);
  EXPECT_EQ(askAt(server4, newName()), "refused");
  EXPECT_THAT(world().seenInClear(), IsEmpty());
  program.reset();
}

TEST_F(TunnelDevice, notices_that_its_network_is_back) {
  protect();
  EXPECT_EQ(askAt(server4, newName()), first);
  EXPECT_EQ(runCommand({"ip", "link", "set", "v0", "down"}).status, 0);
  EXPECT_EQ(runCommand({"ip", "link", "set", "v0", "up"}).status, 0);
  readUntil("The network has changed.");
  EXPECT_EQ(askAt(server4, newName()), first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

// The kernel would let packets to them wait for up to a second.
TEST_F(TunnelDevice, has_neighbours_looked_for_again_when_its_network_has_changed) {
  const auto neighbour = [](const std::string& address) {
    return runCommand({"ip", "neighbour", "show", address, "dev", "v0"}).output;
  };
  protect();
  EXPECT_EQ(runCommand({"bash", "-c", "echo >/dev/udp/10.9.9.1/7; echo >/dev/udp/10.9.9.77/7"}).status, 0);
  ASSERT_THAT(neighbour("10.9.9.77"), testing::AnyOf(HasSubstr("INCOMPLETE"), HasSubstr("FAILED")));
  EXPECT_EQ(runCommand({"ip", "route", "add", "default", "via", "10.9.9.9", "metric", "9999"}).status, 0);
  readUntil("The network has changed.");
  EXPECT_THAT(neighbour("10.9.9.77"), IsEmpty());
  EXPECT_THAT(neighbour("10.9.9.1"), HasSubstr("lladdr"));
  EXPECT_EQ(runCommand({"ip", "route", "delete", "default", "via", "10.9.9.9"}).status, 0);
}

TEST_F(TunnelDevice, comes_back_when_it_is_started_again) {
  protect();
  EXPECT_EQ(program->end(SIGKILL), -SIGKILL);
  const auto changes = world().addressChanges();
  start();
  EXPECT_THAT(changes->readUntil("198.18.53.53"), HasSubstr("198.18.53.53"));
  EXPECT_EQ(askAt(server4, newName()), first);
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelDevice, removes_rules_of_an_earlier_run_if_no_connection_is_enabled) {
  protect();
  EXPECT_EQ(program->end(SIGKILL), -SIGKILL);
  world().nmcli({"connection", "delete", DeviceWorld::profile});
  EXPECT_THAT(rules(), Not(IsEmpty()));
  start();
  readUntil("No connection is to be protected.");
  EXPECT_THAT(rules(), IsEmpty());
}

TEST_F(TunnelDevice, finds_its_endpoint_through_the_links_servers_or_the_last_address) {
  TestEndpoint named(always(9), "doh.example");
  world().outside().give("doh.example", "10.9.9.2");
  program = world().run(named.caFile());
  readUntil("No connection is to be protected.");
  world().addProfile(named.url("doh.example"));
  world().nmcli({"connection", "up", DeviceWorld::profile});
  EXPECT_EQ(askAt(server4, newName()), "192.0.2.9");
  const std::vector<std::string> ofTheEndpoint{"udp 53 doh.example", "udp 53 doh.example"};
  EXPECT_EQ(world().seenInClear(), ofTheEndpoint) << "its own name over two families, and nothing else";
  EXPECT_EQ(program->end(SIGTERM), 0);
  const auto kept = world().file("kept");
  EXPECT_EQ((std::ostringstream() << std::ifstream(kept / "addresses").rdbuf()).str(),
            "doh.example 10.9.9.2\n");
  EXPECT_EQ(std::filesystem::status(kept).permissions(), std::filesystem::perms(0700));
  EXPECT_EQ(std::filesystem::status(kept / "addresses").permissions(), std::filesystem::perms(0600));

  world().outside().give("doh.example", "");
  program = world().run(named.caFile());
  const auto changes = world().addressChanges();
  EXPECT_THAT(changes->readUntil("198.18.53.53"), HasSubstr("198.18.53.53"));
  EXPECT_EQ(askAt(server4, newName()), "192.0.2.9");
}

TEST_F(TunnelDevice, is_seen_by_the_doctor_in_each_of_its_states) {
  using doctor::Asked;
  using Connection = doctor::TunnelState::Connection;
  const std::string serviceType(VPNDNSManager::tunnelBundleId);
  const auto expect = [&](const std::string& when, Connection connection, Asked atTunnel, Asked elsewhere,
                          Asked bySystem, bool endpointAnswers) {
    auto state = doctor::readTunnelConnection(world().bus().address(), serviceType);
    doctor::askQuestions(state);
    EXPECT_EQ(state.connection, connection) << when;
    EXPECT_EQ(state.atTunnel, atTunnel) << when;
    EXPECT_EQ(state.elsewhere, elsewhere) << when;
    EXPECT_EQ(state.bySystem, bySystem) << when;
    EXPECT_EQ(state.endpointAnswers, endpointAnswers) << when;
  };
  start();
  readUntil("No connection is to be protected.");
  world().outside().give("tunnel.quillmar.live", Outside::answer);
  EXPECT_TRUE(DeviceWorld::resolvConfBecomes("nameserver 10.9.9.1\n"));
  expect("not set up", Connection::absent, Asked::silent, Asked::silent, Asked::anotherAnswers, false);
  world().addProfile(endpoint.url());
  expect("off", Connection::off, Asked::silent, Asked::silent, Asked::anotherAnswers, false);
  world().nmcli({"connection", "up", DeviceWorld::profile});
  EXPECT_TRUE(DeviceWorld::resolvConfBecomes("nameserver 198.18.53.53\n"));
  expect("on", Connection::on, Asked::tunnelAnswers, Asked::tunnelAnswers, Asked::tunnelAnswers, true);
  world().changeEndpoint("https://127.0.0.1:1/");
  readUntil("Asks 127.0.0.1:1.");
  expect("no endpoint", Connection::on, Asked::tunnelAnswers, Asked::tunnelAnswers, Asked::tunnelAnswers,
         false);
  EXPECT_EQ(program->end(SIGKILL), -SIGKILL);
  auto killed = doctor::readTunnelConnection(world().bus().address(), serviceType);
  doctor::askQuestions(killed);
  EXPECT_EQ(killed.atTunnel, Asked::refused);
  EXPECT_EQ(killed.elsewhere, Asked::refused);
  EXPECT_EQ(killed.bySystem, Asked::silent);
}

TEST_F(TunnelDevice, lets_the_doctor_see_the_network_below) {
  using Network = doctor::TunnelState::Network;
  const auto network = [] {
    world().nmcli({"networking", "connectivity", "check"});
    return doctor::readTunnelConnection(world().bus().address(), "any.tunnel").network;
  };
  EXPECT_EQ(network(), Network::limited) << "nobody is at the address of the check";
  {
    RunningProgram portal(
        endingWithTheTest({"ip", "netns", "exec", "outside", "python3", "-uc",
                           "from http.server import *\n"
                           "server = HTTPServer(('10.9.9.1', 8080), SimpleHTTPRequestHandler)\n"
                           "print('serves')\nserver.serve_forever()"}));
    EXPECT_EQ(portal.readLine(), "serves");
    EXPECT_EQ(network(), Network::portal);
  }
  world().nmcli({"connection", "down", "wire"});
  EXPECT_EQ(network(), Network::none);
}

TEST_F(TunnelDevice, restores_its_rules) {
  protect();
  const auto whole = rules();
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"flush", "ruleset"},
        {"delete", "table", "inet", "quillmar_tunnel"},
        {"flush", "chain", "inet", "quillmar_tunnel", "shut"},
        {"insert", "rule", "inet", "quillmar_tunnel", "out", "accept"}}) {
    std::vector<std::string> command{"nft"};
    command.insert(command.end(), words.begin(), words.end());
    EXPECT_EQ(runCommand(command).status, 0);
    readUntil("Another program changed the rules; they are put back.");
    EXPECT_EQ(rules(), whole) << words[0] << ' ' << words[1];
    EXPECT_EQ(askAt(server4, newName()), first);
  }
  EXPECT_THAT(world().seenInClear(), IsEmpty());
}

TEST_F(TunnelDevice, does_not_change_rules_of_others) {
  EXPECT_EQ(runCommand({"nft", "add", "table", "inet", "others"}).status, 0);
  protect();
  disconnect();
  EXPECT_THAT(rules(), AllOf(HasSubstr("table inet others"), Not(HasSubstr("quillmar"))));
  EXPECT_EQ(runCommand({"nft", "delete", "table", "inet", "others"}).status, 0);
}

TEST_F(TunnelDevice, ends_its_connection_when_it_is_released) {
  protect();
  EXPECT_EQ(world().tunnel({"release"}).status, 0);
  readUntil("Protects no more: it was released.");
  EXPECT_THAT(rules(), IsEmpty());
  EXPECT_NE(runCommand({"ip", "link", "show", "quillmar0"}).status, 0);
  EXPECT_EQ(askAt(server4, newName()), Outside::answer);
  world().nmcli({"connection", "up", DeviceWorld::profile});
  EXPECT_EQ(askAt(server4, newName()), first);
}

TEST_F(TunnelDevice, is_removed_by_release_even_if_another_process_made_it) {
  EXPECT_EQ(runCommand({"ip", "tuntap", "add", "dev", "quillmar0", "mode", "tun"}).status, 0);
  EXPECT_EQ(world().tunnel({"release"}).status, 0);
  EXPECT_NE(runCommand({"ip", "link", "show", "quillmar0"}).status, 0);
}

TEST_F(TunnelDevice, removes_rules_and_device_when_it_ends) {
  protect();
  EXPECT_EQ(program->end(SIGTERM), 0);
  EXPECT_THAT(rules(), IsEmpty());
  EXPECT_EQ(askAt(server4, newName()), Outside::answer);
  program.reset();
}

}  // namespace
}  // namespace quillmar::tunnel
