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

// What service and worker say to each other. One message is one datagram, and one value. Whoever reads one
// takes nothing for granted: what is not whole, or has more than it should, is no message.
namespace quillmar::tunnel {

inline constexpr std::size_t largestWorkerMessage = std::size_t{16} * 1024;
inline constexpr std::size_t longestLine = 512;
inline constexpr std::size_t longestUrl = 4096;
inline constexpr std::size_t longestPath = 4096;
inline constexpr std::size_t longestHost = 253;
inline constexpr std::size_t mostHosts = 16;
inline constexpr std::size_t mostServers = 16;
inline constexpr std::size_t mostListeners = 2;

// The first word to the worker: what it needs before it shuts itself in, and as whom it does.
struct Begin {
  std::uint32_t user = 0;
  std::uint32_t group = 0;
  std::uint16_t listeners = 0;  // as many pairs of sockets stand beside the one for messages
  std::string caFile{};
  std::string url{};  // as of TakeEndpoint: questions may wait already
  LinkBootstrap::LastGood lastGood{};

  friend bool operator==(const Begin&, const Begin&) = default;
};
// Whom to ask from now on; no text is nobody.
struct TakeEndpoint {
  std::string url{};

  friend bool operator==(const TakeEndpoint&, const TakeEndpoint&) = default;
};
// The answer to WantServers.
struct TakeServers {
  NameServers servers{};

  friend bool operator==(const TakeServers&, const TakeServers&) = default;
};
// Connections that were good may lead nowhere now, and those that were not may be.
struct NetworkChanged {
  friend bool operator==(const NetworkChanged&, const NetworkChanged&) = default;
};
using ToWorker = std::variant<Begin, TakeEndpoint, TakeServers, NetworkChanged>;

// For the log.
struct Line {
  std::string text{};

  friend bool operator==(const Line&, const Line&) = default;
};
struct WantServers {
  friend bool operator==(const WantServers&, const WantServers&) = default;
};
// The endpoint was met at this address.
struct Reached {
  std::string host{};
  boost::asio::ip::address address{};

  friend bool operator==(const Reached&, const Reached&) = default;
};
using FromWorker = std::variant<Line, WantServers, Reached>;

// What is too long or too many is cut.
std::string encode(const ToWorker& message);
std::string encode(const FromWorker& message);

std::optional<ToWorker> decodeToWorker(std::string_view text);
std::optional<FromWorker> decodeFromWorker(std::string_view text);

}  // namespace quillmar::tunnel
