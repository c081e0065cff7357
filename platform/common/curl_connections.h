#pragma once

#include <curl/curl.h>

#include <chrono>
#include <string_view>
#include <vector>

#include "platform/common/file_descriptor.h"

namespace quillmar {

// The sockets of a session's connections. libcurl opens and closes them here, so that a request can look at
// the connection that it is about to use. Used on the session's thread.
class CurlConnections {
 public:
  using Clock = std::chrono::steady_clock;

  // A new socket, which programs that this one starts do not inherit.
  curl_socket_t open(const curl_sockaddr& address, Clock::time_point now);
  void close(curl_socket_t socket);

  // The socket with this local address; CURL_SOCKET_BAD if there is none.
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

// Whether bytes wait that no request has asked for: on the socket, or in the TLS layer of the connection that
// the handle is about to use.
bool hasUnreadInput(CURL* handle, curl_socket_t socket);

// Whether the connection that the handle is about to use speaks HTTP/2 by agreement (ALPN).
bool speaksHttp2(CURL* handle);

}  // namespace quillmar
