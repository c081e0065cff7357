#pragma once

#include <boost/asio/io_context.hpp>
#include <list>
#include <memory>
#include <optional>
#include <vector>

#include "tunnel/network/alarm.h"
#include "tunnel/network/bootstrap.h"
#include "tunnel/network/endpoint.h"
#include "tunnel/network/sockets.h"
#include "tunnel/network/tcp_listener.h"
#include "tunnel/network/tls.h"
#include "tunnel/network/udp_listener.h"
#include "tunnel/resolver/resolver.h"
#include "tunnel/resolver/upstreams.h"

namespace quillmar::tunnel {

// The objects that connections to the endpoint use.
struct Outgoing {
  std::unique_ptr<TlsClient> tls;
  std::unique_ptr<Bootstrap> bootstrap;
};

// Listeners, resolver and upstream together, on one thread. It gets its listening sockets from the caller,
// and opens only connections to the endpoint.
class Server {
 public:
  Server(boost::asio::io_context& context, std::vector<Sockets> sockets, Outgoing outgoing,
         FailureLog::Tell tell);
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Uses this endpoint from now on, or none.
  void take(const std::optional<Endpoint>& endpoint);
  // Replaces connections that may be dead at once.
  void networkChanged();

  // Runs until the context is stopped.
  void run();

 private:
  struct Listening {
    Listening(Server& server, Sockets sockets);
    UdpListener udp;
    TcpListener tcp;
  };

  Answering answeringOn(Channel channel);
  std::optional<Time> wakeTime() const;
  void lookAtTheTime();

  boost::asio::io_context& context_;
  const Outgoing outgoing_;
  FailureLog log_;
  Upstreams upstreams_;
  Resolver resolver_;
  Alarm alarm_;
  std::list<Listening> listening_;
};

}  // namespace quillmar::tunnel
