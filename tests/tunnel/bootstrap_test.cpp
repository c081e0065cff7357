#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <thread>

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

  explicit NameServer(Answering answering)
      : answering_(std::move(answering)), socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(socket_, reinterpret_cast<const sockaddr*>(&address), size), 0);
    ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
    endpoint = {ip::address_v4::loopback(), ntohs(address.sin_port)};
    thread_ = std::thread([this] { serve(); });
  }
  ~NameServer() {
    ::eventfd_write(stop_, 1);
    thread_.join();
    ::close(socket_);
    ::close(stop_);
  }
  NameServer(const NameServer&) = delete;
  NameServer& operator=(const NameServer&) = delete;

  ip::udp::endpoint endpoint;
  std::atomic<int> questions = 0;

 private:
  void serve() {
    std::array<pollfd, 2> files{pollfd{socket_, POLLIN, 0}, pollfd{stop_, POLLIN, 0}};
    while (::poll(files.data(), files.size(), -1) > 0 && files[1].revents == 0) {
      std::array<char, 2048> buffer{};
      sockaddr_in from{};
      socklen_t size = sizeof from;
      const auto got =
          ::recvfrom(socket_, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&from), &size);
      const auto query =
          std::get<Query>(parseQuery({buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0))}));
      ++questions;
      for (auto reply : answering_(query)) {
        put16(reply, 0, static_cast<std::uint16_t>(get16(reply, 0) ^ query.id));
        ::sendto(socket_, reply.data(), reply.size(), 0, reinterpret_cast<const sockaddr*>(&from), size);
      }
    }
  }

  const Answering answering_;
  const int socket_;
  const int stop_ = ::eventfd(0, EFD_CLOEXEC);
  std::thread thread_;
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
  // The found addresses as text.
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
