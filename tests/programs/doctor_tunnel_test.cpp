#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "programs/doctor/dns_question.h"
#include "programs/doctor/tunnel_state.h"

namespace quillmar::doctor {
namespace {

using namespace std::string_literals;
using testing::StartsWith;
using Connection = TunnelState::Connection;
using Network = TunnelState::Network;

TunnelState healthy() {
  return {.connection = Connection::on,
          .name = "Protection",
          .network = Network::full,
          .atTunnel = Asked::tunnelAnswers,
          .elsewhere = Asked::tunnelAnswers,
          .bySystem = Asked::tunnelAnswers,
          .endpointAnswers = true};
}

// A change of the healthy state, and the finding that it leads to.
struct Case {
  std::function<void(TunnelState&)> change;
  Finding TunnelFindings::*part;
  bool works;
  std::string words;  // how the text begins
};

void expectAll(const std::vector<Case>& cases) {
  for (std::size_t i = 0; i < cases.size(); ++i) {
    auto state = healthy();
    cases[i].change(state);
    const auto finding = judge(state).*cases[i].part;
    EXPECT_EQ(finding.works, cases[i].works) << i << ": " << finding.words;
    EXPECT_THAT(finding.words, StartsWith(cases[i].words)) << i;
  }
}

TEST(DoctorsTunnel, a_protected_device_lacks_nothing) {
  const auto findings = judge(healthy());
  for (const auto& part : {findings.connection, findings.redirection, findings.nameLookup, findings.endpoint,
                           findings.network}) {
    EXPECT_TRUE(part.works) << part.words;
  }
}

TEST(DoctorsTunnel, the_connection_is_there_and_on_and_its_program_answers) {
  constexpr auto part = &TunnelFindings::connection;
  expectAll({
      {[](auto& state) { state.connection = Connection::unknown; }, part, false, "can't be looked at"},
      {[](auto& state) { state.connection = Connection::absent; }, part, false, "is not set up"},
      {[](auto& state) { state.connection = Connection::off; }, part, false,
       "is switched off. Switch it on: nmcli connection up 'Protection'"},
      {[](auto& state) { state.connection = Connection::comingUp; }, part, false, "is being switched on."},
      {[](auto& state) { state.atTunnel = Asked::refused; }, part, false,
       "is switched on, but its program does not answer"},
      {[](auto& state) { state.atTunnel = Asked::silent; }, part, false,
       "is switched on, but its program does not answer"},
      // Another program has the tunnel's address.
      {[](auto& state) { state.atTunnel = Asked::anotherAnswers; }, part, false,
       "is switched on, but its program does not answer"},
  });
}

TEST(DoctorsTunnel, the_redirection_works_if_the_tunnel_answers_for_others) {
  constexpr auto part = &TunnelFindings::redirection;
  const auto isDead = [](auto& state) { state.atTunnel = Asked::refused; };
  expectAll({
      {[](auto& state) { state.elsewhere = Asked::silent; }, part, false, "is missing"},
      {[](auto& state) { state.elsewhere = Asked::anotherAnswers; }, part, false, "is missing"},
      // A router can refuse too. While the tunnel answers, it was not this machine.
      {[](auto& state) { state.elsewhere = Asked::refused; }, part, false, "is missing"},
      {[](auto& state) { state.elsewhere = Asked::unreachable; }, part, false, "can't be tried"},
      {[&](auto& state) {
         isDead(state);
         state.elsewhere = Asked::refused;
       },
       part, true, "stands, and refuses every question"},
      {[&](auto& state) {
         isDead(state);
         state.elsewhere = Asked::silent;
       },
       part, false, "is missing"},
      {[&](auto& state) {
         isDead(state);
         state.connection = Connection::off;
         state.elsewhere = Asked::refused;
       },
       part, false, "still stands and refuses every question, although the tunnel is off. Lift it"},
      {[&](auto& state) {
         isDead(state);
         state.connection = Connection::off;
         state.elsewhere = Asked::silent;
       },
       part, false, "does not stand while the tunnel is off"},
  });
}

TEST(DoctorsTunnel, the_systems_resolver_asks_the_tunnel) {
  constexpr auto part = &TunnelFindings::nameLookup;
  expectAll({
      {[](auto& state) { state.bySystem = Asked::anotherAnswers; }, part, false,
       "goes past the tunnel: another resolver of this computer"},
      {[](auto& state) {
         state.atTunnel = Asked::silent;
         state.bySystem = Asked::anotherAnswers;
       },
       part, false, "goes past the tunnel, which does not answer."},
      {[](auto& state) { state.bySystem = Asked::silent; }, part, false,
       "fails, although the tunnel answers."},
      {[](auto& state) {
         state.atTunnel = Asked::refused;
         state.bySystem = Asked::silent;
       },
       part, false, "fails."},
  });
}

TEST(DoctorsTunnel, the_endpoint_answers_what_the_tunnel_passes_on) {
  constexpr auto part = &TunnelFindings::endpoint;
  expectAll({
      {[](auto& state) { state.endpointAnswers = false; }, part, false, "does not answer"},
      {[](auto& state) {
         state.atTunnel = Asked::refused;
         state.endpointAnswers = false;
       },
       part, false, "can't be asked, since the tunnel does not answer."},
  });
}

TEST(DoctorsTunnel, a_network_that_wants_a_sign_in_is_named_while_the_endpoint_does_not_answer) {
  constexpr auto part = &TunnelFindings::network;
  const auto in = [](Network network) {
    return [network](TunnelState& state) {
      state.endpointAnswers = false;
      state.network = network;
    };
  };
  expectAll({
      {in(Network::unknown), part, false, "is unknown"},
      {in(Network::none), part, false, "none is connected."},
      {in(Network::portal), part, false, "wants a sign-in"},
      // With the tunnel up, NetworkManager can't detect the sign-in page either.
      {in(Network::limited), part, false, "leads nowhere, or wants a sign-in"},
      {in(Network::full), part, true, "leads out."},
      {[](auto& state) { state.network = Network::limited; }, part, true, "leads to the family's endpoint."},
  });
}

TEST(DoctorsTunnel, nothing_is_known_without_a_bus) {
  EXPECT_EQ(readTunnelConnection("unix:path=/nowhere/bus", "any.tunnel").connection, Connection::unknown);
}

TEST(DoctorsQuestion, is_judged_by_its_code) {
  const auto replyOfCode = [](char code) { return DnsReply("\x12\x34\x81"s + code + std::string(8, '\0')); };
  for (const char code : {'\0', '\3'}) {
    EXPECT_TRUE(isLookedUp(replyOfCode(code))) << int(code);
  }
  for (const char code : {'\2', '\5', '\x85'}) {
    EXPECT_FALSE(isLookedUp(replyOfCode(code))) << int(code);
  }
  EXPECT_FALSE(isLookedUp(0)) << "silence";
}

TEST(DoctorsQuestion, sees_an_address_at_the_end_of_a_message) {
  EXPECT_TRUE(endsWithAddress("…\xc6\x12\x35\x35", "198.18.53.53"));
  EXPECT_FALSE(endsWithAddress("…\xc6\x12\x35\x36", "198.18.53.53"));
  EXPECT_FALSE(endsWithAddress("", "198.18.53.53"));
}

}  // namespace
}  // namespace quillmar::doctor
