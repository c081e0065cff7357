#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <functional>
#include <memory>
#include <vector>

#include "tunnel/network/endpoint.h"

namespace quillmar::tunnel {

using TcpEndpoints = std::vector<boost::asio::ip::tcp::endpoint>;

// Finds the endpoint's addresses, in the order in which they are to be tried.
class Bootstrap {
 public:
  using Found = std::function<void(boost::system::error_code, TcpEndpoints)>;

  explicit Bootstrap(boost::asio::io_context& context) : resolver_(context) {}

  // An address in the URL is used as it is, and localhost is this machine. Any other name is asked of the
  // system's resolver: on a thread of its library's, for it blocks.
  void find(const Endpoint& endpoint, Found found);
  void cancel() { resolver_.cancel(); }

 private:
  boost::asio::ip::tcp::resolver resolver_;
};

// IPv6 and IPv4 by turns, each in its order; IPv6 first (RFC 8305).
TcpEndpoints byTurns(const TcpEndpoints& endpoints);

}  // namespace quillmar::tunnel
