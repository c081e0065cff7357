#include "tunnel/worker/server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <set>
#include <utility>

#include "tests/tunnel/support/messages.h"
#include "tests/tunnel/support/served_endpoint.h"

namespace quillmar::tunnel {
namespace {

using namespace test;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

TEST_F(TunnelServer, sends_only_the_header_fields_of_dns_over_https) {
  startWell();
  EXPECT_TRUE(resolves("www.example.org"));
  ASSERT_THAT(endpoint->requests(), SizeIs(1));
  EXPECT_THAT(endpoint->requests()[0],
              testing::UnorderedElementsAre(
                  Pair(":method", "POST"), Pair(":scheme", "https"),
                  Pair(":authority", "localhost:" + std::to_string(endpoint->port())),
                  Pair(":path", "/dns-query/secret-token"), Pair("accept", "application/dns-message"),
                  Pair("content-type", "application/dns-message"), Pair("content-length", "128")));
}

TEST_F(TunnelServer, keeps_the_case_of_the_name) {
  startWell();
  for (const auto channel : {Channel::udp, Channel::tcp}) {
    EXPECT_THAT(readByLdns(ask("wWw.Example.ORG", channel)),
                ContainsRegex("wWw\\.Example\\.ORG\\.[[:space:]]+[0-9]+"));
  }
}

TEST_F(TunnelServer, sends_all_questions_over_one_connection) {
  startWell();
  for (int number = 0; number < 50; ++number) {
    EXPECT_TRUE(resolves(std::to_string(number) + ".example"));
  }
  EXPECT_EQ(endpoint->connections(), 1);
  EXPECT_THAT(endpoint->requests(), SizeIs(50));
  EXPECT_THAT(server->told(), IsEmpty());
}

TEST_F(TunnelServer, resumes_its_tls_session_when_it_reconnects) {
  startWell();
  EXPECT_TRUE(resolves("a.example"));
  EXPECT_EQ(endpoint->resumptions(), 0);
  endpoint->disconnectAll();
  EXPECT_TRUE(resolves("b.example"));
  EXPECT_EQ(endpoint->connections(), 2);
  EXPECT_EQ(endpoint->resumptions(), 1);
}

TEST_F(TunnelServer, answers_a_quick_question_before_a_slow_one) {
  auto held = std::make_shared<std::pair<std::int32_t, std::string>>();
  start([held](TestPeer& peer, std::int32_t stream, const std::string& question) {
    if (question.find("slow") != std::string::npos) {
      *held = {stream, question};
    } else if (question.find("free") != std::string::npos) {
      peer.answer(held->first, answerTo(held->second));
      peer.answer(stream, answerTo(question));
    } else {
      peer.answer(stream, answerTo(question));
    }
  });
  ClientSocket slow(server->port(), Channel::tcp);
  slow.send(queryText({.name = "slow.example", .id = 1}));
  slow.send(queryText({.name = "quick.example", .id = 2}));
  EXPECT_EQ(readHeader(slow.receive())->id, 2);
  EXPECT_TRUE(resolves("free.example"));
  EXPECT_EQ(readHeader(slow.receive())->id, 1);
}

TEST_F(TunnelServer, rejects_a_certificate_of_an_unknown_authority) {
  endpoint = std::make_unique<TestEndpoint>([](TestPeer&, std::int32_t, const std::string&) {});
  server = std::make_unique<RunningServer>(endpoint->url(), "");
  expectFailure("www.example.org", "The endpoint's certificate can't be verified: ");
  EXPECT_THAT(endpoint->requests(), IsEmpty());
  EXPECT_THAT(server->told(), ElementsAre(HasSubstr("The endpoint's certificate can't be verified")));
}

TEST_F(TunnelServer, rejects_a_certificate_of_another_host) {
  endpoint = std::make_unique<TestEndpoint>([](TestPeer&, std::int32_t, const std::string&) {});
  server = std::make_unique<RunningServer>(endpoint->url("other.localhost"), endpoint->caFile());
  expectFailure("www.example.org", "The endpoint's certificate can't be verified: hostname mismatch");
  EXPECT_THAT(endpoint->requests(), IsEmpty());
}

TEST_F(TunnelServer, takes_an_address_in_the_url_as_it_is) {
  endpoint =
      std::make_unique<TestEndpoint>([](TestPeer& peer, std::int32_t stream, const std::string& question) {
        peer.answer(stream, answerTo(question));
      });
  server = std::make_unique<RunningServer>(endpoint->url("127.0.0.1"), endpoint->caFile());
  EXPECT_TRUE(resolves("www.example.org"));
}

TEST_F(TunnelServer, says_that_an_endpoint_refuses_connections) {
  startWell();
  const auto url = endpoint->url();
  const auto closed = std::make_unique<RunningServer>(url, endpoint->caFile());
  server.reset();
  endpoint.reset();
  for (int count = 0; count < 20; ++count) {
    const auto reply = askServer(closed->port(), queryText({.name = "www.example.org", .payload = 1232}));
    EXPECT_THAT(reply, HasSubstr("The endpoint can't be reached: Connection refused."));
  }
  EXPECT_THAT(closed->told(), ElementsAre("The endpoint can't be reached: Connection refused."));
}

TEST_F(TunnelServer, rejects_an_endpoint_without_http2) {
  start([](TestPeer&, std::int32_t, const std::string&) {}, TestEndpoint::Speaks::http1);
  expectFailure("www.example.org", "The endpoint does not speak HTTP/2.");
  start([](TestPeer&, std::int32_t, const std::string&) {}, TestEndpoint::Speaks::plainText);
  expectFailure("www.example.org", "The endpoint can't be reached: no TLS, wrong version number.");
}

TEST_F(TunnelServer, rejects_invalid_answers) {
  start([](TestPeer& peer, std::int32_t stream, const std::string& question) {
    const auto is = [&](const char* name) { return question.find(name) != std::string::npos; };
    const auto good = answerTo(question);
    if (is("html")) {
      peer.answer(stream, "<html></html>", {}, "200", "text/html");
    } else if (is("untyped")) {
      peer.answer(stream, good, {}, "200", "");
    } else if (is("gone")) {
      peer.answer(stream, good, {}, "404");
    } else if (is("elsewhere")) {
      peer.answer(stream, good, {{"location", "https://localhost/"}}, "302");
    } else if (is("broken")) {
      peer.answer(stream, "", {}, "500", "text/html");
    } else if (is("other")) {
      auto other = good;
      other[headerSize + 1] = 'x';
      peer.answer(stream, other);
    } else if (is("cut")) {
      peer.answer(stream, good.substr(0, good.size() - 1));
    } else if (is("nothing")) {
      peer.answer(stream, "");
    } else if (is("toolong")) {
      peer.answer(stream, good + std::string(largestMessage - good.size() + 1, 'x'));
    } else if (is("endless")) {
      peer.answer(stream, std::string(5'000'000, 'x'));
    } else {
      peer.answer(stream, good);
    }
  });
  const std::vector<std::pair<std::string, std::string>> cases{
      {"html", "not a DNS message"}, {"untyped", "not a DNS message"},
      {"gone", "status 404"},        {"elsewhere", "redirects elsewhere: status 302"},
      {"broken", "status 500"},      {"other", "another question"},
      {"cut", "malformed"},          {"nothing", "malformed"},
      {"toolong", "too long"},       {"endless", "too long"}};
  for (const auto& [name, text] : cases) {
    expectFailure(name + ".example", text);
    EXPECT_TRUE(resolves("after-" + std::to_string(&text - &cases[0].second) + ".example"));
  }
  EXPECT_EQ(endpoint->connections(), 1) << "no bad answer costs the connection";
}

TEST_F(TunnelServer, accepts_the_longest_possible_answer) {
  start([](TestPeer& peer, std::int32_t stream, const std::string& question) {
    const RecordText text{.type = 65'280, .data = std::string(1011, 'x')};
    auto answer = answerTo(question, text, 64);
    answer.resize(largestMessage, '\0');
    peer.answer(stream, answer);
  });
  const auto udp = ask("long.example");
  EXPECT_NE(get16(udp, 2) & flag::truncated, 0);
  const auto tcp = ask("long.example", Channel::tcp);
  EXPECT_EQ(get16(tcp, 2) & flag::truncated, 0);
  EXPECT_GT(tcp.size(), 64'000U);
  EXPECT_THAT(readByLdns(tcp), HasSubstr("ANSWER: 64"));
}

TEST_F(TunnelServer, accepts_a_thousand_headers) {
  start([](TestPeer& peer, std::int32_t stream, const std::string& question) {
    Fields many;
    for (int number = 0; number < 1000; ++number) {
      many.emplace_back("x-" + std::to_string(number), "value");
    }
    peer.answer(stream, answerTo(question), many);
  });
  EXPECT_TRUE(resolves("www.example.org"));
  EXPECT_TRUE(resolves("another.example.org"));
}

TEST_F(TunnelServer, obeys_age_and_content_type) {
  startBadly([](TestPeer& peer, std::int32_t stream, const std::string& question) {
    peer.answer(stream, answerTo(question), {{"age", "280"}, {"age", "x"}, {"cache-control", "max-age=9999"}},
                "200", "Application/DNS-Message; charset=none");
  });
  EXPECT_THAT(readByLdns(ask("www.example.org")), ContainsRegex("[[:space:]]60[[:space:]]+IN[[:space:]]+A"));
  startBadly([](TestPeer& peer, std::int32_t stream, const std::string& question) {
    peer.answer(stream, answerTo(question), {{"age", "280"}});
  });
  EXPECT_THAT(readByLdns(ask("www.example.org")), ContainsRegex("[[:space:]]20[[:space:]]+IN[[:space:]]+A"));
}

TEST_F(TunnelServer, does_not_ask_before_retry_after) {
  startBadly([](TestPeer& peer, std::int32_t stream, const std::string&) {
    peer.answer(stream, "", {{"retry-after", "30"}}, "503");
  });
  expectFailure("a.example", "status 503");
  expectFailure("b.example", "asked for a pause");
  EXPECT_THAT(endpoint->requests(), SizeIs(1));
}

TEST_F(TunnelServer, goes_on_after_a_goaway_in_the_middle) {
  startBadly([](TestPeer& peer, std::int32_t stream, const std::string&) { peer.goAway(stream - 1); });
  EXPECT_TRUE(resolves("a.example")) << "asked again on another connection";
  EXPECT_EQ(endpoint->connections(), 2);
  startBadly([](TestPeer& peer, std::int32_t stream, const std::string& question) {
    peer.goAway(stream);
    peer.answer(stream, answerTo(question));
  });
  EXPECT_TRUE(resolves("b.example")) << "answered on the closing one";
  EXPECT_TRUE(resolves("c.example"));
  EXPECT_EQ(endpoint->connections(), 2);
}

TEST_F(TunnelServer, asks_again_after_a_broken_connection) {
  startBadly([](TestPeer& peer, std::int32_t, const std::string&) { peer.hangUp(); });
  EXPECT_TRUE(resolves("a.example"));
  EXPECT_EQ(endpoint->connections(), 2);
  endpoint->disconnectAll();
  EXPECT_TRUE(resolves("b.example"));
}

TEST_F(TunnelServer, asks_again_once_after_a_reset_request) {
  startBadly([](TestPeer& peer, std::int32_t stream, const std::string&) {
    peer.reset(stream, NGHTTP2_REFUSED_STREAM);
  });
  EXPECT_TRUE(resolves("a.example"));
  start([](TestPeer& peer, std::int32_t stream, const std::string&) { peer.reset(stream); });
  expectFailure("a.example", "The connection to the endpoint broke.");
  EXPECT_THAT(endpoint->requests(), SizeIs(2));
}

TEST_F(TunnelServer, does_not_reconnect_often_to_an_endpoint_that_breaks_every_connection) {
  start([](TestPeer& peer, std::int32_t, const std::string&) { peer.hangUp(); });
  for (int number = 0; number < 100; ++number) {
    expectFailure(std::to_string(number) + ".example", "The connection to the endpoint broke");
  }
  EXPECT_LT(endpoint->connections(), 10);
}

TEST_F(TunnelServer, ignores_garbage) {
  startWell();
  ClientSocket garbage(server->port(), Channel::udp);
  for (const auto& bytes : {""s, "x"s, std::string(11, '\xff'), std::string(2000, '\xff'),
                            std::string(5000, 'x'), answerText({})}) {
    garbage.sendRaw(bytes);
  }
  garbage.send(queryText({.id = 77}));
  EXPECT_EQ(readHeader(garbage.receive())->id, 77) << "the first that it gets";
}

TEST_F(TunnelServer, answers_malformed_questions_with_an_error) {
  startWell();
  const auto code = [&](const std::string& message, Channel channel) {
    return readHeader(askServer(server->port(), message, channel))->rcode();
  };
  for (const auto channel : {Channel::udp, Channel::tcp}) {
    EXPECT_EQ(code(queryText({}).substr(0, 20), channel), rcode::formErr);
    EXPECT_EQ(code(queryText({.type = type::axfr}), channel), rcode::notImp);
  }
  EXPECT_THAT(endpoint->requests(), IsEmpty());
}

TEST_F(TunnelServer, survives_a_flood) {
  startWell();
  ClientSocket flood(server->port(), Channel::udp);
  for (int number = 0; number < 20'000; ++number) {
    flood.send(queryText({.name = std::to_string(number) + ".example"}));
  }
  EXPECT_EQ(readHeader(ask("localhost", Channel::tcp))->rcode(), rcode::noError);
  const auto reply = ask("www.example.org", Channel::tcp);
  EXPECT_TRUE(readHeader(reply)->answers == 1 || reply.find("Too many queries") != std::string::npos);
}

TEST_F(TunnelServer, is_not_blocked_by_half_sent_queries) {
  startWell();
  std::vector<std::unique_ptr<ClientSocket>> halves;
  for (std::size_t number = 0; number < 100; ++number) {
    halves.push_back(std::make_unique<ClientSocket>(server->port(), Channel::tcp));
    halves.back()->sendRaw(std::string(1 + number % 3, '\x01'));
  }
  EXPECT_EQ(readHeader(ask("www.example.org", Channel::tcp))->answers, 1);
}

TEST_F(TunnelServer, answers_a_client_that_has_shut_down_its_side) {
  startWell();
  ClientSocket client(server->port(), Channel::tcp);
  client.send(queryText({.name = "a.example", .id = 1}));
  client.send(queryText({.name = "b.example", .id = 2}));
  client.endSending();
  std::set<std::uint16_t> ids;
  ids.insert(readHeader(client.receive())->id);
  ids.insert(readHeader(client.receive())->id);
  EXPECT_THAT(ids, ElementsAre(1, 2));
  EXPECT_EQ(client.receive(), "");
}

TEST_F(TunnelServer, answers_a_query_that_arrives_byte_by_byte) {
  startWell();
  ClientSocket client(server->port(), Channel::tcp);
  const auto message = queryText({.id = 5});
  for (const char byte : "\0"s + static_cast<char>(message.size()) + message) {
    client.sendRaw(std::string(1, byte));
  }
  EXPECT_EQ(readHeader(client.receive())->id, 5);
}

TEST_F(TunnelServer, answers_pipelined_queries) {
  startWell();
  ClientSocket client(server->port(), Channel::tcp);
  std::string all;
  for (std::uint16_t number = 0; number < 500; ++number) {
    const auto message = queryText({.name = std::to_string(number) + ".example", .id = number});
    append16(all, static_cast<std::uint16_t>(message.size()));
    all += message;
  }
  client.sendRaw(all);
  std::set<std::uint16_t> ids;
  for (int count = 0; count < 500; ++count) {
    const auto reply = client.receive();
    ASSERT_NE(reply, "");
    EXPECT_EQ(readHeader(reply)->answers, 1);
    ids.insert(readHeader(reply)->id);
  }
  EXPECT_THAT(ids, SizeIs(500));
}

// A listener that answers every message at once, but "slow question" only after "release".
class EchoingListener {
 public:
  explicit EchoingListener(std::chrono::milliseconds idle) {
    auto sockets = std::get<Sockets>(bindSockets(context_, *parseListenAddress("127.0.0.1:0")));
    port = sockets.tcp.local_endpoint().port();
    listener_ = std::make_unique<TcpListener>(
        std::move(sockets.tcp),
        [this](std::string_view message, const auto& reply) {
          if (message == "slow question") {
            held_.push_back(reply);
          } else if (message == "release") {
            for (const auto& release : std::exchange(held_, {})) {
              release("late answer");
            }
          } else {
            reply("answer");
          }
        },
        idle);
    thread_ = std::thread([this] { context_.run(); });
  }
  ~EchoingListener() {
    context_.stop();
    thread_.join();
  }
  EchoingListener(const EchoingListener&) = delete;
  EchoingListener& operator=(const EchoingListener&) = delete;

  int port = 0;

 private:
  boost::asio::io_context context_{1};
  std::vector<std::function<void(std::string)>> held_;
  std::unique_ptr<TcpListener> listener_;
  std::thread thread_;
};

TEST(TunnelTcpListener, closes_an_idle_connection) {
  const EchoingListener listener(std::chrono::milliseconds(20));
  ClientSocket client(listener.port, Channel::tcp);
  client.send("question");
  EXPECT_EQ(client.receive(), "answer");
  client.sendRaw("\x01");
  EXPECT_TRUE(client.seesEnd());
}

TEST(TunnelTcpListener, closes_the_longest_idle_connection_when_there_are_too_many) {
  const EchoingListener listener(std::chrono::hours(1));
  std::vector<std::unique_ptr<ClientSocket>> clients;
  const auto welcome = [&] {
    clients.push_back(std::make_unique<ClientSocket>(listener.port, Channel::tcp));
    clients.back()->send("question");
    EXPECT_EQ(clients.back()->receive(), "answer");
  };
  for (std::size_t count = 0; count < TcpListener::mostConnections; ++count) {
    welcome();
  }
  clients[0]->send("question");
  EXPECT_EQ(clients[0]->receive(), "answer");
  welcome();
  EXPECT_TRUE(clients[1]->seesEnd());
  clients[0]->send("question");
  EXPECT_EQ(clients[0]->receive(), "answer");
}

TEST(TunnelTcpListener, keeps_a_client_that_waits_for_its_answer_while_others_connect) {
  const EchoingListener listener(std::chrono::hours(1));
  ClientSocket waiting(listener.port, Channel::tcp);
  waiting.send("slow question");
  std::vector<std::unique_ptr<ClientSocket>> silent;
  for (std::size_t count = 0; count < 3 * TcpListener::mostConnections; ++count) {
    silent.push_back(std::make_unique<ClientSocket>(listener.port, Channel::tcp));
  }
  ClientSocket last(listener.port, Channel::tcp);
  last.send("question");
  EXPECT_EQ(last.receive(), "answer") << "everybody before it was taken in";
  last.send("release");
  EXPECT_EQ(waiting.receive(), "late answer");
}

}  // namespace
}  // namespace quillmar::tunnel
