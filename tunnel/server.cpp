#include "tunnel/server.h"

#include <algorithm>
#include <utility>

#include "tunnel/network/http2_connection.h"

namespace quillmar::tunnel {

Server::Server(boost::asio::io_context& context, Sockets sockets, Endpoint endpoint,
               std::unique_ptr<TlsClient> tls, FailureLog::Tell tell)
    : context_(context),
      endpoint_(std::move(endpoint)),
      tls_(std::move(tls)),
      log_(std::move(tell)),
      upstream_([this](ConnectionEvents& events) {
        return std::make_unique<Http2Connection>(context_, endpoint_, *tls_, events);
      }),
      resolver_(upstream_, log_),
      alarm_(context),
      udp_(std::move(sockets.udp), answeringOn(Channel::udp)),
      tcp_(std::move(sockets.tcp), answeringOn(Channel::tcp)) {}

Answering Server::answeringOn(Channel channel) {
  return [this, channel](std::string_view message, Resolver::Reply reply) {
    resolver_.ask(BootClock::now(), message, channel, std::move(reply));
  };
}

std::optional<Time> Server::wakeTime() const {
  const auto resolver = resolver_.wakeTime();
  const auto upstream = upstream_.wakeTime();
  return resolver && upstream ? std::min(*resolver, *upstream) : (resolver ? resolver : upstream);
}

void Server::lookAtTheTime() {
  if (!wakeTime()) {
    return;
  }
  const auto now = BootClock::now();
  resolver_.wake(now);
  upstream_.wake(now);
  alarm_.setFor(now, wakeTime());
}

void Server::run() {
  while (context_.run_one() > 0) {
    lookAtTheTime();
    upstream_.flush();
  }
}

}  // namespace quillmar::tunnel
