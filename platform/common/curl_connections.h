#pragma once

#include <curl/curl.h>

#include <chrono>
#include <string_view>
#include <vector>

#include "platform/common/file_descriptor.h"

namespace quillmar {

// The sockets of a session's connections. libcurl opens and closes them here, so that a request can inspect
// the connection that it will use. Session's thread only.
class CurlConnections {
 public:
  using Clock = std::chrono::steady_clock;

  // A new socket, not inherited by child processes.
  curl_socket_t open(const curl_sockaddr& address, Clock::time_point now);
  void close(curl_socket_t socket);

  // The socket with this local address, or CURL_SOCKET_BAD.
  curl_socket_t find(std::string_view localAddress, int localPort) const;

  void wasUsed(curl_socket_t socket, Clock::time_point now);
  Clock::time_point lastUse(curl_socket_t socket) const;

 private:
  struct Connection {
    FileDescriptor socket;
    Clock::time_point lastUse;
  };

  std::vector<Connection> connections_;
};

// Whether unrequested bytes are waiting, on the socket or in the connection's TLS layer.
bool hasUnreadInput(CURL* handle, curl_socket_t socket);

// Whether the connection that the handle will use agreed on HTTP/2 by ALPN.
bool speaksHttp2(CURL* handle);

}  // namespace quillmar
