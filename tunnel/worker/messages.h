#pragma once

#include <boost/asio/ip/address.hpp>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "tunnel/network/link_bootstrap.h"
#include "tunnel/network/server_lookup.h"

// The messages between service and worker, one per datagram. A message that is incomplete, has trailing bytes
// or exceeds a limit is rejected.
namespace quillmar::tunnel {

inline constexpr std::size_t largestWorkerMessage = std::size_t{16} * 1024;
inline constexpr std::size_t longestLine = 512;
inline constexpr std::size_t longestUrl = 4096;
inline constexpr std::size_t longestPath = 4096;
inline constexpr std::size_t longestHost = 253;
inline constexpr std::size_t mostHosts = 16;
inline constexpr std::size_t mostServers = 16;
inline constexpr std::size_t mostListeners = 2;

// The first message to the worker: what it needs before it drops its rights, and the user to change to.
struct Begin {
  std::uint32_t user = 0;
  std::uint32_t group = 0;
  std::uint16_t listeners = 0;  // the number of listening pairs that the worker was given
  std::string caFile{};
  std::string url{};  // as in TakeEndpoint, since queries may be waiting
  LinkBootstrap::LastGood lastGood{};

  friend bool operator==(const Begin&, const Begin&) = default;
};
// The endpoint from now on; empty for none.
struct TakeEndpoint {
  std::string url{};

  friend bool operator==(const TakeEndpoint&, const TakeEndpoint&) = default;
};
// The answer to WantServers.
struct TakeServers {
  NameServers servers{};

  friend bool operator==(const TakeServers&, const TakeServers&) = default;
};
// Existing connections may be dead, and failed ones may work now.
struct NetworkChanged {
  friend bool operator==(const NetworkChanged&, const NetworkChanged&) = default;
};
// The worker answers with Pong.
struct Ping {
  friend bool operator==(const Ping&, const Ping&) = default;
};
using ToWorker = std::variant<Begin, TakeEndpoint, TakeServers, NetworkChanged, Ping>;

// A line for the log.
struct Line {
  std::string text{};

  friend bool operator==(const Line&, const Line&) = default;
};
struct WantServers {
  friend bool operator==(const WantServers&, const WantServers&) = default;
};
// A verified connection to this address was made.
struct Reached {
  std::string host{};
  boost::asio::ip::address address{};

  friend bool operator==(const Reached&, const Reached&) = default;
};
struct Pong {
  friend bool operator==(const Pong&, const Pong&) = default;
};
using FromWorker = std::variant<Line, WantServers, Reached, Pong>;

// Truncates texts and lists that exceed a limit.
std::string encode(const ToWorker& message);
std::string encode(const FromWorker& message);

std::optional<ToWorker> decodeToWorker(std::string_view text);
std::optional<FromWorker> decodeFromWorker(std::string_view text);

}  // namespace quillmar::tunnel
