#include "tunnel/worker/server.h"

#include <algorithm>
#include <utility>

#include "tunnel/network/http2_connection.h"

namespace quillmar::tunnel {

Server::Listening::Listening(Server& server, Sockets sockets)
    : udp(std::move(sockets.udp), server.answeringOn(Channel::udp)),
      tcp(std::move(sockets.tcp), server.answeringOn(Channel::tcp)) {}

Server::Server(boost::asio::io_context& context, std::vector<Sockets> sockets, Outgoing outgoing,
               FailureLog::Tell tell)
    : context_(context),
      outgoing_(std::move(outgoing)),
      log_(std::move(tell)),
      upstreams_([this] { resolver_.forget(); }),
      resolver_(upstreams_, log_),
      alarm_(context) {
  for (auto& each : sockets) {
    listening_.emplace_back(*this, std::move(each));
  }
}

void Server::take(const std::optional<Endpoint>& endpoint) {
  if (!endpoint) {
    return upstreams_.takeNone();
  }
  const auto route =
      std::make_shared<const Route>(Route{*endpoint, outgoing_.tls->another(), *outgoing_.bootstrap});
  upstreams_.take(BootClock::now(), [this, route](ConnectionEvents& events) {
    return std::make_unique<Http2Connection>(context_, route, events);
  });
}

void Server::networkChanged() {
  const auto now = BootClock::now();
  upstreams_.networkChanged(now);
  resolver_.networkChanged(now);
}

Answering Server::answeringOn(Channel channel) {
  return [this, channel](std::string_view message, Resolver::Reply reply) {
    resolver_.ask(BootClock::now(), message, channel, std::move(reply));
  };
}

std::optional<Time> Server::wakeTime() const {
  const auto resolver = resolver_.wakeTime();
  const auto upstream = upstreams_.wakeTime();
  return resolver && upstream ? std::min(*resolver, *upstream) : (resolver ? resolver : upstream);
}

void Server::lookAtTheTime() {
  const auto now = BootClock::now();
  resolver_.wake(now);
  upstreams_.wake(now);
  alarm_.setFor(now, wakeTime());
}

void Server::run() {
  while (context_.run_one() > 0) {
    lookAtTheTime();
    upstreams_.flush();
  }
}

}  // namespace quillmar::tunnel
