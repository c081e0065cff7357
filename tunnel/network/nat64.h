#pragma once

#include <boost/asio/ip/address.hpp>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

// Reaches IPv4 addresses from a network with IPv6 only (NAT64).
namespace quillmar::tunnel {

// A name with known IPv4 addresses, and with IPv6 addresses only on networks that translate (RFC 7050).
inline constexpr std::string_view ipv4OnlyHost = "ipv4only.arpa";

// The prefixes under which such a network translates IPv4 addresses.
struct Nat64Prefix {
  boost::asio::ip::address_v6::bytes_type bytes{};
  std::size_t length = 0;  // in bytes

  friend bool operator==(const Nat64Prefix&, const Nat64Prefix&) = default;
};

// The prefixes found in the addresses of `ipv4OnlyHost`, without repetitions and at most a few.
inline constexpr std::size_t mostNat64Prefixes = 4;
std::vector<Nat64Prefix> nat64Prefixes(const std::vector<boost::asio::ip::address>& ofIpv4OnlyHost);

// The translated IPv4 address (RFC 6052); nullopt for an address of this machine or its link.
std::optional<boost::asio::ip::address_v6> translated(const Nat64Prefix& prefix,
                                                      const boost::asio::ip::address_v4& address);

// Whether this machine has a route to the address. Sends nothing.
bool hasRouteTo(const boost::asio::ip::address& address);

}  // namespace quillmar::tunnel
