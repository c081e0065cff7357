#pragma once

#include <boost/asio/io_context.hpp>
#include <memory>
#include <optional>
#include <string>

#include "tunnel/network/alarm.h"
#include "tunnel/network/endpoint.h"
#include "tunnel/network/sockets.h"
#include "tunnel/network/tcp_listener.h"
#include "tunnel/network/tls.h"
#include "tunnel/network/udp_listener.h"
#include "tunnel/resolver/doh_upstream.h"
#include "tunnel/resolver/resolver.h"

namespace quillmar::tunnel {

// Listener, resolver and upstream put together, on one thread.
class Server {
 public:
  Server(boost::asio::io_context& context, Sockets sockets, Endpoint endpoint, std::unique_ptr<TlsClient> tls,
         FailureLog::Tell tell);

  // Serves until the context is stopped.
  void run();

 private:
  Answering answeringOn(Channel channel);
  std::optional<Time> wakeTime() const;
  void lookAtTheTime();

  boost::asio::io_context& context_;
  const Endpoint endpoint_;
  const std::unique_ptr<TlsClient> tls_;
  FailureLog log_;
  DohUpstream upstream_;
  Resolver resolver_;
  Alarm alarm_;
  UdpListener udp_;
  TcpListener tcp_;
};

}  // namespace quillmar::tunnel
