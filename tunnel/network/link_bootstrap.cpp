#include "tunnel/network/link_bootstrap.h"

#include <algorithm>
#include <boost/asio/error.hpp>
#include <utility>

namespace quillmar::tunnel {

namespace ip = boost::asio::ip;

LinkBootstrap::LinkBootstrap(boost::asio::io_context& context, Servers servers, LastGood lastGood,
                             Reached reached)
    : context_(context),
      servers_(std::move(servers)),
      lastGood_(std::move(lastGood)),
      reached_(std::move(reached)) {}

void LinkBootstrap::reached(const Endpoint& endpoint, const ip::address& address) {
  boost::system::error_code isName;
  ip::make_address(endpoint.host, isName);
  if (isName && !address.is_loopback() && std::exchange(lastGood_[endpoint.host], address) != address) {
    reached_(endpoint.host, address);
  }
}

void LinkBootstrap::missed(const Endpoint& endpoint) { known_.erase(endpoint.host); }

void LinkBootstrap::lookUp(const Endpoint& endpoint, Found found) {
  const auto known = known_.find(endpoint.host);
  if (known != known_.end() && known->second.ends > BootClock::now()) {
    return answer(endpoint, known->second.addresses, found);
  }
  servers_([this, endpoint, found = std::move(found)](NameServers servers) {
    const auto lookup = std::make_shared<ServerLookup>(
        context_, std::move(servers), [this, endpoint, found](const ServerLookup::Result& result) {
          if (result.life > std::chrono::seconds::zero()) {
            known_[endpoint.host] = {result.addresses, BootClock::now() + result.life};
          }
          answer(endpoint, result.addresses, found);
        });
    lookup->start(endpoint.host);
  });
}

void LinkBootstrap::answer(const Endpoint& endpoint, const std::vector<ip::address>& addresses,
                           const Found& found) {
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
  const bool isUnknown = endpoints.empty();
  found(isUnknown ? make_error_code(boost::asio::error::host_not_found) : boost::system::error_code(),
        std::move(endpoints));
}

}  // namespace quillmar::tunnel
