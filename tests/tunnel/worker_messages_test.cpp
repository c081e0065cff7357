#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tunnel/worker/messages.h"

namespace quillmar::tunnel {
namespace {

namespace ip = boost::asio::ip;
using testing::SizeIs;

const auto address4 = ip::make_address("192.0.2.7");
const auto address6 = ip::make_address("fe80::1%3");

const std::vector<ToWorker> toWorker{Begin{},
                                     Begin{.user = 60853,
                                           .group = 7,
                                           .listeners = 2,
                                           .caFile = "/ca.pem",
                                           .url = "https://doh.example/q",
                                           .lastGood = {{"a.example", address4}, {"b.example", address6}}},
                                     TakeEndpoint{},
                                     TakeEndpoint{"https://doh.example/q?a=b"},
                                     TakeServers{},
                                     TakeServers{{{address4, 53}, {address6, 5353}}},
                                     NetworkChanged{},
                                     Ping{}};
const std::vector<FromWorker> fromWorker{Line{},
                                         Line{"The endpoint answers."},
                                         WantServers{},
                                         Reached{"doh.example", address4},
                                         Reached{"doh.example", address6},
                                         Pong{}};

TEST(TunnelWorkerMessages, arrive_as_they_were_sent) {
  for (const auto& message : toWorker) {
    EXPECT_EQ(decodeToWorker(encode(message)), message);
  }
  for (const auto& message : fromWorker) {
    EXPECT_EQ(decodeFromWorker(encode(message)), message);
  }
}

TEST(TunnelWorkerMessages, of_one_direction_are_invalid_in_the_other) {
  for (const auto& message : toWorker) {
    EXPECT_EQ(decodeFromWorker(encode(message)), std::nullopt);
  }
  for (const auto& message : fromWorker) {
    EXPECT_EQ(decodeToWorker(encode(message)), std::nullopt);
  }
}

TEST(TunnelWorkerMessages, that_are_incomplete_or_have_trailing_bytes_are_rejected) {
  const auto check = [](const std::string& text, auto decode) {
    for (std::size_t size = 0; size < text.size(); ++size) {
      EXPECT_FALSE(decode(text.substr(0, size))) << size;
    }
    EXPECT_FALSE(decode(text + '\0')) << "more than whole";
  };
  for (const auto& message : toWorker) {
    check(encode(message), decodeToWorker);
  }
  for (const auto& message : fromWorker) {
    check(encode(message), decodeFromWorker);
  }
}

TEST(TunnelWorkerMessages, that_are_too_long_are_truncated_when_sent) {
  const auto line = decodeFromWorker(encode(FromWorker(Line{std::string(100'000, 'x')})));
  ASSERT_TRUE(line);
  EXPECT_THAT(std::get<Line>(*line).text, SizeIs(longestLine));
  const auto servers = decodeToWorker(encode(ToWorker(TakeServers{NameServers(100, {address4, 53})})));
  ASSERT_TRUE(servers);
  EXPECT_THAT(std::get<TakeServers>(*servers).servers, SizeIs(mostServers));
}

TEST(TunnelWorkerMessages, that_are_too_long_are_rejected_when_received) {
  auto line = encode(FromWorker(Line{std::string(longestLine, 'x')}));
  ASSERT_TRUE(decodeFromWorker(line));
  line[2] = static_cast<char>((longestLine + 1) / 256);
  line[3] = static_cast<char>((longestLine + 1) % 256);
  EXPECT_FALSE(decodeFromWorker(line + 'x'));
  auto servers = encode(ToWorker(TakeServers{NameServers(mostServers, {address4, 53})}));
  ASSERT_TRUE(decodeToWorker(servers));
  servers[3] = static_cast<char>(mostServers + 1);
  EXPECT_FALSE(decodeToWorker(servers + servers.substr(4, 8)));
}

TEST(TunnelWorkerMessages, fit_into_one_datagram) {
  LinkBootstrap::LastGood lastGood;
  for (std::size_t host = 0; host < mostHosts; ++host) {
    lastGood[std::string(longestHost - 1, 'x') + static_cast<char>('a' + host)] = address6;
  }
  for (const ToWorker& message : {ToWorker(Begin{.caFile = std::string(longestPath, 'x'),
                                 .url = std::string(longestUrl, 'x'),
                                 .lastGood = lastGood}),
                                  ToWorker(TakeEndpoint{std::string(longestUrl, 'x')}),
                                  ToWorker(TakeServers{NameServers(mostServers, {address6, 53})})}) {
    const auto text = encode(message);
    EXPECT_LE(text.size(), largestWorkerMessage);
    EXPECT_EQ(decodeToWorker(text), message);
  }
}

}  // namespace
}  // namespace quillmar::tunnel
