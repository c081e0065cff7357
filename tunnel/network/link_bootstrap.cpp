#include "tunnel/network/link_bootstrap.h"

#include <algorithm>
#include <boost/asio/error.hpp>
#include <utility>

namespace quillmar::tunnel {

namespace ip = boost::asio::ip;

LinkBootstrap::LinkBootstrap(boost::asio::io_context& context, Servers servers, LastGood lastGood,
                             Reached reached, HasRoute hasRoute)
    : context_(context),
      servers_(std::move(servers)),
      lastGood_(std::move(lastGood)),
      reached_(std::move(reached)),
      hasRoute_(std::move(hasRoute)) {}

// Another network may translate otherwise, or not at all: the original is kept.
void LinkBootstrap::reached(const Endpoint& endpoint, const ip::address& address) {
  const auto translation = originals_.find(address);
  const auto& kept = translation == originals_.end() ? address : translation->second;
  boost::system::error_code isName;
  ip::make_address(endpoint.host, isName);
  if (isName && !kept.is_loopback() && std::exchange(lastGood_[endpoint.host], kept) != kept) {
    reached_(endpoint.host, kept);
  }
}

void LinkBootstrap::missed(const Endpoint& endpoint) {
  known_.erase(endpoint.host);
  known_.erase(std::string(ipv4OnlyHost));
}

void LinkBootstrap::lookUp(const Endpoint& endpoint, Found found) {
  addressesOf(endpoint.host, [this, endpoint, found = std::move(found)](const Addresses& addresses) {
    answer(endpoint, addresses, found);
  });
}

void LinkBootstrap::addressesOf(const std::string& host, std::function<void(const Addresses&)> take) {
  const auto known = known_.find(host);
  if (known != known_.end() && known->second.ends > BootClock::now()) {
    return take(known->second.addresses);
  }
  servers_([this, host, take = std::move(take)](NameServers servers) {
    const auto lookup = std::make_shared<ServerLookup>(
        context_, std::move(servers), [this, host, take](const ServerLookup::Result& result) {
          if (result.life > std::chrono::seconds::zero()) {
            known_[host] = {result.addresses, BootClock::now() + result.life};
          }
          take(result.addresses);
        });
    lookup->start(host);
  });
}

void LinkBootstrap::answer(const Endpoint& endpoint, const Addresses& addresses, const Found& found) {
  TcpEndpoints endpoints;
  for (const auto& address : addresses) {
    endpoints.emplace_back(address, endpoint.port);
  }
  endpoints = byTurns(endpoints);
  if (const auto last = lastGood_.find(endpoint.host); last != lastGood_.end()) {
    const ip::tcp::endpoint again(last->second, endpoint.port);
    if (std::ranges::find(endpoints, again) == endpoints.end()) {
      endpoints.push_back(again);
    }
  }
  if (endpoints.empty()) {
    return found(boost::asio::error::host_not_found, {});
  }
  deliver(std::move(endpoints), found);
}

void LinkBootstrap::deliver(TcpEndpoints endpoints, const Found& found) {
  if (!needsTranslation(endpoints)) {
    return found({}, std::move(endpoints));
  }
  addressesOf(std::string(ipv4OnlyHost),
              [this, endpoints = std::move(endpoints), found](const Addresses& ofIpv4OnlyHost) mutable {
                const auto more = translations(endpoints, nat64Prefixes(ofIpv4OnlyHost));
                endpoints.insert(endpoints.end(), more.begin(), more.end());
                found({}, std::move(endpoints));
              });
}

bool LinkBootstrap::needsTranslation(const TcpEndpoints& endpoints) const {
  const auto isOutOfReach = [this](const auto& endpoint) { return !hasRoute_(endpoint.address()); };
  const auto anywhere = ip::make_address("64:ff9b::1");  // most networks translate at 64:ff9b::/96
  return std::ranges::all_of(endpoints, isOutOfReach) && hasRoute_(anywhere);
}

TcpEndpoints LinkBootstrap::translations(const TcpEndpoints& endpoints,
                                         const std::vector<Nat64Prefix>& prefixes) {
  TcpEndpoints all;
  originals_.clear();
  for (const auto& endpoint : endpoints) {
    for (const auto& prefix : prefixes) {
      const auto& original = endpoint.address();
      if (const auto address = original.is_v4() ? translated(prefix, original.to_v4()) : std::nullopt) {
        all.emplace_back(*address, endpoint.port());
        originals_.emplace(*address, original);
      }
    }
  }
  return all;
}

}  // namespace quillmar::tunnel
