#pragma once

#include <chrono>
#include <cstddef>
#include <memory>

#include "tunnel/network/sockets.h"
#include "tunnel/network/udp_listener.h"

namespace quillmar::tunnel {

// Receives queries over TCP (RFC 7766). A connection may carry any number of them, and each is answered as
// soon as its reply is ready.
class TcpListener {
 public:
  static constexpr std::size_t mostConnections = 64;
  static constexpr std::chrono::seconds usualIdle{10};

  // A connection is closed after this time without a complete query.
  TcpListener(TcpAcceptor acceptor, Answering answering, std::chrono::milliseconds idle = usualIdle);
  TcpListener(const TcpListener&) = delete;
  TcpListener& operator=(const TcpListener&) = delete;
  ~TcpListener();

 private:
  class Acceptance;
  const std::shared_ptr<Acceptance> acceptance_;
};

}  // namespace quillmar::tunnel
