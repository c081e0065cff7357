#include "tunnel/network/nat64.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <boost/asio/ip/udp.hpp>
#include <iterator>

namespace quillmar::tunnel {
namespace {

namespace ip = boost::asio::ip;

constexpr std::array<std::size_t, 6> lengths{4, 5, 6, 7, 8, 12};
// Byte 8 of the prefix is reserved and is skipped between the bytes of the IPv4 address.
constexpr std::size_t reserved = 8;

ip::address_v6 written(const Nat64Prefix& prefix, const ip::address_v4& address) {
  auto bytes = prefix.bytes;
  auto at = prefix.length;
  for (const auto byte : address.to_bytes()) {
    at += at == reserved ? 1 : 0;
    bytes[at++] = byte;
  }
  return ip::address_v6(bytes);
}

// The network's answers decide where connections go, so addresses of this machine or its link are rejected.
bool canBeTranslation(const ip::address_v6& address) {
  return !address.is_v4_mapped() && !address.is_v4_compatible() && !address.is_multicast() &&
         !address.is_link_local();
}

std::optional<Nat64Prefix> prefixIn(const ip::address_v6& address) {
  const std::array wellKnown{ip::address_v4({192, 0, 0, 170}), ip::address_v4({192, 0, 0, 171})};
  for (const auto length : lengths) {
    Nat64Prefix prefix{.length = length};
    const auto bytes = address.to_bytes();
    std::copy_n(bytes.begin(), length, prefix.bytes.begin());
    const bool shows =
        std::ranges::any_of(wellKnown, [&](const auto& known) { return written(prefix, known) == address; });
    if (shows && canBeTranslation(address)) {
      return prefix;
    }
  }
  return std::nullopt;
}

}  // namespace

std::vector<Nat64Prefix> nat64Prefixes(const std::vector<ip::address>& ofIpv4OnlyHost) {
  std::vector<Nat64Prefix> prefixes;
  for (const auto& address : ofIpv4OnlyHost) {
    const auto prefix = address.is_v6() ? prefixIn(address.to_v6()) : std::nullopt;
    if (prefix && prefixes.size() < mostNat64Prefixes &&
        std::ranges::find(prefixes, *prefix) == prefixes.end()) {
      prefixes.push_back(*prefix);
    }
  }
  return prefixes;
}

std::optional<ip::address_v6> translated(const Nat64Prefix& prefix, const ip::address_v4& address) {
  constexpr unsigned linkLocal = 0xa9fe;
  const bool isNear = address.is_loopback() || address.is_unspecified() || address.is_multicast() ||
                      address.to_uint() >> 16U == linkLocal;
  return isNear ? std::nullopt : std::optional(written(prefix, address));
}

bool hasRouteTo(const ip::address& address) {
  const ip::udp::endpoint anyPort(address, 53);
  const int socket = ::socket(anyPort.protocol().family(), SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const bool has = ::connect(socket, anyPort.data(), static_cast<socklen_t>(anyPort.size())) == 0;
  ::close(socket);
  return has;
}

}  // namespace quillmar::tunnel
