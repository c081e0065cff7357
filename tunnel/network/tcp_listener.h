#pragma once

#include <chrono>
#include <cstddef>
#include <memory>

#include "tunnel/network/sockets.h"
#include "tunnel/network/udp_listener.h"

namespace quillmar::tunnel {

// Takes questions over TCP (RFC 7766): as many as a client likes on one connection, each answered as soon as
// its answer is there.
class TcpListener {
 public:
  static constexpr std::size_t mostConnections = 64;
  static constexpr std::chrono::seconds usualIdle{10};

  // A client that has asked nothing whole for so long is let go.
  TcpListener(TcpAcceptor acceptor, Answering answering, std::chrono::milliseconds idle = usualIdle);
  TcpListener(const TcpListener&) = delete;
  TcpListener& operator=(const TcpListener&) = delete;
  ~TcpListener();

 private:
  class Acceptance;
  const std::shared_ptr<Acceptance> acceptance_;
};

}  // namespace quillmar::tunnel
