#pragma once

#include <boost/asio/io_context.hpp>
#include <memory>
#include <string>

#include "tunnel/network/bootstrap.h"
#include "tunnel/network/endpoint.h"
#include "tunnel/network/tls.h"
#include "tunnel/resolver/connection.h"

namespace quillmar::tunnel {

// Shared by all connections to an endpoint.
struct Route {
  Endpoint endpoint;
  std::unique_ptr<TlsClient> tls;
  Bootstrap& bootstrap;
};

// A connection for DNS over HTTPS (RFC 8484): HTTP/2 over TLS over TCP. The context and the route's
// bootstrap have to outlive it.
class Http2Connection final : public Connection {
 public:
  Http2Connection(boost::asio::io_context& context, std::shared_ptr<const Route> route,
                  ConnectionEvents& events);
  ~Http2Connection() override;

  void send(Ticket ticket, const std::string& question) override;
  void cancel(Ticket ticket) override;
  void ping() override;
  void flush() override;

 private:
  class Session;
  const std::shared_ptr<Session> session_;
};

}  // namespace quillmar::tunnel
