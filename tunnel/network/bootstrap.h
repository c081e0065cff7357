#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <functional>
#include <utility>
#include <vector>

#include "tunnel/network/endpoint.h"

namespace quillmar::tunnel {

using TcpEndpoints = std::vector<boost::asio::ip::tcp::endpoint>;

// Finds the endpoint's addresses. They are in the order in which to try them.
class Bootstrap {
 public:
  using Found = std::function<void(boost::system::error_code, TcpEndpoints)>;

  Bootstrap() = default;
  Bootstrap(const Bootstrap&) = delete;
  Bootstrap& operator=(const Bootstrap&) = delete;
  virtual ~Bootstrap() = default;

  // An address in the URL is used as it is, and localhost is this machine. Any other name is looked up.
  // `found` may be called before this returns.
  void find(const Endpoint& endpoint, Found found);
  // A connection to this address was made and its certificate verified.
  virtual void reached(const Endpoint& /*endpoint*/, const boost::asio::ip::address& /*address*/) {}
  // None of the found addresses accepted a connection.
  virtual void missed(const Endpoint& /*endpoint*/) {}

 protected:
  // Calls `found`. An override may add addresses.
  virtual void deliver(TcpEndpoints endpoints, const Found& found) { found({}, std::move(endpoints)); }

 private:
  virtual void lookUp(const Endpoint& endpoint, Found found) = 0;
};

// Asks the system's resolver, which blocks, on a thread of Asio's.
class SystemBootstrap final : public Bootstrap {
 public:
  explicit SystemBootstrap(boost::asio::io_context& context) : resolver_(context) {}

 private:
  void lookUp(const Endpoint& endpoint, Found found) override;

  boost::asio::ip::tcp::resolver resolver_;
};

// IPv6 and IPv4 addresses alternate, IPv6 first (RFC 8305). Each family keeps its order.
TcpEndpoints byTurns(const TcpEndpoints& endpoints);

}  // namespace quillmar::tunnel
