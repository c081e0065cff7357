#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <functional>
#include <vector>

#include "tunnel/network/endpoint.h"

namespace quillmar::tunnel {

using TcpEndpoints = std::vector<boost::asio::ip::tcp::endpoint>;

// Finds the endpoint's addresses, in the order in which they are to be tried.
class Bootstrap {
 public:
  using Found = std::function<void(boost::system::error_code, TcpEndpoints)>;

  Bootstrap() = default;
  Bootstrap(const Bootstrap&) = delete;
  Bootstrap& operator=(const Bootstrap&) = delete;
  virtual ~Bootstrap() = default;

  // An address in the URL is used as it is, and localhost is this machine; any other name is looked up.
  // `found` may be called at once.
  void find(const Endpoint& endpoint, Found found);
  // A connection there stands, and its certificate is the right one.
  virtual void reached(const Endpoint& /*endpoint*/, const boost::asio::ip::address& /*address*/) {}
  // None of the addresses that were found took a connection.
  virtual void missed(const Endpoint& /*endpoint*/) {}

 private:
  virtual void lookUp(const Endpoint& endpoint, Found found) = 0;
};

// Asks the system's resolver: on a thread of its library's, for it blocks.
class SystemBootstrap final : public Bootstrap {
 public:
  explicit SystemBootstrap(boost::asio::io_context& context) : resolver_(context) {}

 private:
  void lookUp(const Endpoint& endpoint, Found found) override;

  boost::asio::ip::tcp::resolver resolver_;
};

// IPv6 and IPv4 by turns, each in its order; IPv6 first (RFC 8305).
TcpEndpoints byTurns(const TcpEndpoints& endpoints);

}  // namespace quillmar::tunnel
