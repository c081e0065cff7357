// Faults of the endpoint. Every query gets an explained SERVFAIL, the log names the cause once, and the next
// query after the fault is answered.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tunnel/support/served_endpoint.h"

namespace quillmar::tunnel {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Speaks = TestEndpoint::Speaks;

constexpr const char* answersAgain = "The endpoint answers.";

// Several clients ask at once, two of them the same question.
std::vector<std::string> askSeveral(int port) {
  std::vector<std::unique_ptr<ClientSocket>> clients;
  for (const std::string name : {"a.example", "b.example", "c.example", "d.example", "a.example"}) {
    clients.push_back(std::make_unique<ClientSocket>(port, Channel::udp));
    clients.back()->send(queryText({.name = name, .payload = 1232}));
  }
  std::vector<std::string> replies;
  for (const auto& client : clients) {
    replies.push_back(client->receive());
  }
  return replies;
}

void expectExplained(const std::vector<std::string>& replies, const std::string& cause) {
  for (const auto& reply : replies) {
    ASSERT_GE(reply.size(), headerSize);
    EXPECT_EQ(readHeader(reply)->rcode(), rcode::servFail);
    EXPECT_THAT(reply, HasSubstr(cause));
  }
}

TestEndpoint::Answering with(const std::string& status, const std::string& contentType,
                             std::function<std::string(std::string answer)> change = {}) {
  return [=](TestPeer& peer, std::int32_t stream, const std::string& question) {
    const auto answer = answerTo(question);
    peer.answer(stream, change ? change(answer) : answer, {}, status, contentType);
  };
}
TestEndpoint::Answering withBody(std::function<std::string(std::string answer)> change) {
  return with("200", "application/dns-message", std::move(change));
}

std::string withFlag(std::string answer, std::uint16_t added) {
  put16(answer, 2, static_cast<std::uint16_t>(get16(answer, 2) | added));
  return answer;
}

struct Fault {
  const char* name;
  std::string cause;
  TestEndpoint::Answering answering{};
  std::optional<Speaks> speaks{};
  bool refuses = false;
  // The tunnel reconnects without being asked.
  bool costsConnection = false;
};

std::ostream& operator<<(std::ostream& out, const Fault& fault) { return out << fault.name; }

const std::vector<Fault> faults{
    {.name = "refuses_connections",
     .cause = "The endpoint can't be reached: Connection refused.",
     .refuses = true,
     .costsConnection = true},
    {.name = "is_silent",
     .cause = "The endpoint can't be reached: no answer.",
     .speaks = Speaks::nothing,
     .costsConnection = true},
    {.name = "speaks_no_tls",
     .cause = "The endpoint can't be reached: no TLS, wrong version number.",
     .speaks = Speaks::plainText,
     .costsConnection = true},
    {.name = "has_a_certificate_of_another_authority",
     .cause = "The endpoint's certificate can't be verified: ",
     .speaks = Speaks::otherAuthority,
     .costsConnection = true},
    {.name = "speaks_http1_only",
     .cause = "The endpoint does not speak HTTP/2.",
     .speaks = Speaks::http1,
     .costsConnection = true},
    {.name = "does_not_answer",
     .cause = "The endpoint did not answer in time.",
     .answering = [](TestPeer&, std::int32_t, const std::string&) {}},
    {.name = "fails",
     .cause = "The endpoint answered with an HTTP error: status 500.",
     .answering = with("500", "application/dns-message")},
    {.name = "does_not_know_the_path",
     .cause = "The endpoint answered with an HTTP error: status 404.",
     .answering = with("404", "text/html")},
    {.name = "points_elsewhere",
     .cause = "The endpoint redirects elsewhere: status 307.",
     .answering = with("307", "text/html")},
    {.name = "answers_html",
     .cause = "The endpoint's answer is not a DNS message.",
     .answering = with("200", "text/html", [](const auto&) { return "<html>Sign in, please.</html>"; })},
    {.name = "answers_html_as_dns",
     .cause = "The endpoint's answer is malformed.",
     .answering = withBody([](const auto&) { return "<html>Sign in, please.</html>"; })},
    {.name = "answers_another_question",
     .cause = "The endpoint answered another question.",
     .answering = withBody([](std::string answer) {
       answer[headerSize + 1] = 'x';
       return answer;
     })},
    {.name = "cuts_its_answers",
     .cause = "The endpoint's answer is malformed.",
     .answering = withBody([](const std::string& answer) { return answer.substr(0, answer.size() - 1); })},
    {.name = "says_that_its_answers_are_truncated",
     .cause = "The endpoint's answer is truncated.",
     .answering = withBody([](const std::string& answer) { return withFlag(answer, flag::truncated); })},
    {.name = "answers_nothing",
     .cause = "The endpoint's answer is malformed.",
     .answering = withBody([](const auto&) { return ""; })},
    {.name = "answers_65535_bytes_of_nothing",
     .cause = "The endpoint's answer is malformed.",
     .answering = withBody([](const auto&) { return std::string(largestMessage, '\xff'); })},
    {.name = "answers_a_byte_more_than_a_message_has",
     .cause = "The endpoint's answer is too long.",
     .answering = withBody([](const auto&) { return std::string(largestMessage + 1, '\xff'); })},
    {.name = "sends_a_megabyte_of_headers",
     .cause = "The connection to the endpoint broke",
     .answering =
         [](TestPeer& peer, std::int32_t stream, const std::string& question) {
           Fields many;
           for (int number = 0; number < 1000; ++number) {
             many.emplace_back("x-header", std::to_string(number) + std::string(1000, 'x'));
           }
           peer.answer(stream, answerTo(question), many);
         },
     .costsConnection = true},
    {.name = "goes_away_in_the_middle",
     .cause = "The connection to the endpoint broke.",
     .answering = [](TestPeer& peer, std::int32_t stream, const std::string&) { peer.goAway(stream - 1); }},
    {.name = "resets_every_request",
     .cause = "The connection to the endpoint broke.",
     .answering = [](TestPeer& peer, std::int32_t stream, const std::string&) { peer.reset(stream); }},
    {.name = "hangs_up_after_every_request",
     .cause = "The connection to the endpoint broke",
     .answering = [](TestPeer& peer, std::int32_t, const std::string&) { peer.hangUp(); },
     .costsConnection = true},
};

struct TunnelFault : TunnelServer, testing::WithParamInterface<Fault> {
  // The endpoint has the fault while `isThere`.
  void startWith(const Fault& fault) {
    start([this, misbehave = fault.answering](TestPeer& peer, std::int32_t stream,
                                              const std::string& question) {
      if (isThere && misbehave) {
        return misbehave(peer, stream, question);
      }
      peer.answer(stream, answerTo(question));
    });
    if (fault.refuses) {
      endpoint->refuse();
    }
    if (fault.speaks) {
      endpoint->speak(*fault.speaks);
    }
  }
  void mend(const Fault& fault) {
    isThere = false;
    if (fault.refuses) {
      endpoint->acceptAgain();
    }
    if (fault.speaks) {
      endpoint->speak(Speaks::http2);
    }
    if (fault.costsConnection) {
      EXPECT_TRUE(endpoint->awaitFreshConnection());
    }
  }

  std::atomic<bool> isThere = true;
};

TEST_P(TunnelFault, of_the_endpoint_is_explained_and_passes) {
  const auto& fault = GetParam();
  startWith(fault);
  expectExplained(askSeveral(server->port()), fault.cause);
  EXPECT_THAT(server->told(), ElementsAre(StartsWith(fault.cause)));
  mend(fault);
  EXPECT_TRUE(resolves("after.example"));
  EXPECT_THAT(server->told(), ElementsAre(StartsWith(fault.cause), answersAgain));
}
INSTANTIATE_TEST_SUITE_P(EveryOne, TunnelFault, testing::ValuesIn(faults),
                         [](const auto& tested) { return std::string(tested.param.name); });

// Finds the endpoint's address once `isKnown`.
class LateBootstrap final : public Bootstrap {
 public:
  LateBootstrap(std::atomic<bool>& isKnown) : isKnown_(isKnown) {}

 private:
  void lookUp(const Endpoint& endpoint, Found found) override {
    if (!isKnown_) {
      return found(boost::asio::error::host_not_found, {});
    }
    found({}, {{boost::asio::ip::address_v4::loopback(), endpoint.port}});
  }

  std::atomic<bool>& isKnown_;
};

TEST_F(TunnelServer, explains_that_the_endpoints_address_is_not_found_until_it_is) {
  std::atomic<bool> isKnown = false;
  endpoint = std::make_unique<TestEndpoint>(
      [](TestPeer& peer, std::int32_t stream, const std::string& question) {
        peer.answer(stream, answerTo(question));
      },
      "doh.example");
  server = std::make_unique<RunningServer>(
      endpoint->url("doh.example"), endpoint->caFile(),
      [&](boost::asio::io_context&) { return std::make_unique<LateBootstrap>(isKnown); });
  const std::string cause = "The endpoint's address can't be found: ";
  expectExplained(askSeveral(server->port()), cause);
  EXPECT_THAT(server->told(), ElementsAre(StartsWith(cause)));
  isKnown = true;
  ASSERT_TRUE(endpoint->awaitFreshConnection());
  EXPECT_TRUE(resolves("after.example"));
  EXPECT_THAT(server->told(), ElementsAre(StartsWith(cause), answersAgain));
}

}  // namespace
}  // namespace quillmar::tunnel
