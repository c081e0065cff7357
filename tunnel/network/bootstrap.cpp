#include "tunnel/network/bootstrap.h"

#include <algorithm>
#include <string>

namespace quillmar::tunnel {
namespace {

namespace ip = boost::asio::ip;

TcpEndpoints knownFor(const Endpoint& endpoint) {
  if (endpoint.host == "localhost" || endpoint.host.ends_with(".localhost")) {
    return {{ip::address_v6::loopback(), endpoint.port}, {ip::address_v4::loopback(), endpoint.port}};
  }
  boost::system::error_code error;
  const auto address = ip::make_address(endpoint.host, error);
  return error ? TcpEndpoints() : TcpEndpoints{{address, endpoint.port}};
}

}  // namespace

TcpEndpoints byTurns(const TcpEndpoints& endpoints) {
  TcpEndpoints rest = endpoints;
  const auto isV6 = [](const auto& endpoint) { return endpoint.address().is_v6(); };
  const auto firstV4 = std::stable_partition(rest.begin(), rest.end(), isV6);
  TcpEndpoints ordered;
  auto v6 = rest.begin();
  for (auto v4 = firstV4; v6 != firstV4 || v4 != rest.end();) {
    if (v6 != firstV4) {
      ordered.push_back(*v6++);
    }
    if (v4 != rest.end()) {
      ordered.push_back(*v4++);
    }
  }
  return ordered;
}

void Bootstrap::find(const Endpoint& endpoint, Found found) {
  if (auto known = knownFor(endpoint); !known.empty()) {
    return deliver(std::move(known), found);
  }
  lookUp(endpoint, std::move(found));
}

void SystemBootstrap::lookUp(const Endpoint& endpoint, Found found) {
  resolver_.async_resolve(endpoint.host, std::to_string(endpoint.port), ip::resolver_base::numeric_service,
                          [found = std::move(found)](auto error, const auto& results) {
                            found(error, byTurns({results.begin(), results.end()}));
                          });
}

}  // namespace quillmar::tunnel
