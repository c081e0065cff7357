#pragma once

#include <boost/asio/ip/address.hpp>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

// Reaching IPv4 addresses from a network that has IPv6 alone.
namespace quillmar::tunnel {

// Its IPv4 addresses are well known, and it has no IPv6 address but on networks that translate (RFC 7050).
inline constexpr std::string_view ipv4OnlyHost = "ipv4only.arpa";

// The addresses that stand for all IPv4 addresses on such a network.
struct Nat64Prefix {
  boost::asio::ip::address_v6::bytes_type bytes{};
  std::size_t length = 0;  // in bytes

  friend bool operator==(const Nat64Prefix&, const Nat64Prefix&) = default;
};

// Those that the addresses of `ipv4OnlyHost` show, each once, and no more than a few.
inline constexpr std::size_t mostNat64Prefixes = 4;
std::vector<Nat64Prefix> nat64Prefixes(const std::vector<boost::asio::ip::address>& ofIpv4OnlyHost);

// The address that stands for an IPv4 address (RFC 6052); nullopt for one that is of this machine or its
// link.
std::optional<boost::asio::ip::address_v6> translated(const Nat64Prefix& prefix,
                                                      const boost::asio::ip::address_v4& address);

// Whether this machine has a route to it. Sends nothing.
bool hasRouteTo(const boost::asio::ip::address& address);

}  // namespace quillmar::tunnel
