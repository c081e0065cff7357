#include "tunnel/network/udp_listener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tunnel/dns/wire.h"

namespace quillmar::tunnel {
namespace {

using boost::asio::ip::udp;
using testing::ElementsAre;

// A client that has asked `question`.
class Asker {
 public:
  Asker(boost::asio::io_context& context, const udp::endpoint& server, const std::string& question)
      : socket_(context, udp::endpoint(server.address(), 0)) {
    socket_.send_to(boost::asio::buffer(question), server);
  }

  // What it has received by now.
  std::string received() {
    std::array<char, 512> buffer{};
    boost::system::error_code error;
    socket_.non_blocking(true);
    const auto size = socket_.receive(boost::asio::buffer(buffer), 0, error);
    return error ? "nothing" : std::string(buffer.data(), size);
  }

 private:
  udp::socket socket_;
};

struct TunnelUdpListener : testing::Test {
  void ask(const std::string& question) { askers.emplace_back(context, address, question); }

  // Handles everything that has been sent. Loopback delivers before `send` returns.
  void listen(Answering answering) {
    listener.emplace(std::move(socket), std::move(answering));
    context.poll();
  }

  boost::asio::io_context context;
  udp::socket socket{context, udp::endpoint(boost::asio::ip::address_v4::loopback(), 0)};
  const udp::endpoint address = socket.local_endpoint();
  std::vector<Asker> askers;
  std::optional<UdpListener> listener;
};

TEST_F(TunnelUdpListener, gives_each_of_many_clients_its_own_reply) {
  constexpr int many = 50;  // more than are received at once
  for (int number = 0; number < many; ++number) {
    ask(std::to_string(number));
  }
  listen([](std::string_view message, const auto& reply) { reply("to " + std::string(message)); });
  for (int number = 0; number < many; ++number) {
    EXPECT_EQ(askers[static_cast<std::size_t>(number)].received(), "to " + std::to_string(number));
  }
}

TEST_F(TunnelUdpListener, sends_a_later_reply_when_it_comes) {
  std::function<void(std::string)> later;
  ask("later");
  ask("now");
  listen([&](std::string_view message, const auto& reply) {
    if (message == "later") {
      later = reply;
    } else {
      reply("at once");
    }
  });
  EXPECT_EQ(askers[1].received(), "at once");
  EXPECT_EQ(askers[0].received(), "nothing");
  later("at last");
  EXPECT_EQ(askers[0].received(), "at last");
}

// Nothing can be sent to port 0.
TEST_F(TunnelUdpListener, loses_no_reply_but_the_one_that_can_not_be_sent) {
  const int raw = ::socket(AF_INET, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_UDP);
  if (raw < 0) {
    GTEST_SKIP() << "A query from port 0 takes root.";
  }
  std::string fromNowhere;
  for (const std::uint16_t field : {std::uint16_t{0}, address.port(), std::uint16_t{9}, std::uint16_t{0}}) {
    append16(fromNowhere, field);
  }
  fromNowhere += 'x';
  ask("a");
  EXPECT_GT(::sendto(raw, fromNowhere.data(), fromNowhere.size(), 0, address.data(),
                     static_cast<socklen_t>(address.size())),
            0);
  ::close(raw);
  ask("b");
  std::vector<std::string> asked;
  listen([&](std::string_view message, const auto& reply) {
    asked.emplace_back(message);
    reply("to " + asked.back());
  });
  EXPECT_THAT(asked, ElementsAre("a", "x", "b"));
  EXPECT_EQ(askers[0].received(), "to a");
  EXPECT_EQ(askers[1].received(), "to b");
}

TEST_F(TunnelUdpListener, sends_nothing_after_its_end) {
  std::function<void(std::string)> later;
  ask("x");
  listen([&](std::string_view, const auto& reply) { later = reply; });
  listener.reset();
  later("too late");
  EXPECT_EQ(askers[0].received(), "nothing");
}

}  // namespace
}  // namespace quillmar::tunnel
