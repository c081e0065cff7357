#include "platform/common/curl_connections.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>

namespace quillmar {
namespace {

bool isLocalAddress(int socket, std::string_view address, int port) {
  sockaddr_storage local{};
  socklen_t size = sizeof local;
  if (getsockname(socket, reinterpret_cast<sockaddr*>(&local), &size) != 0) {
    return false;
  }
  const auto& v4 = reinterpret_cast<const sockaddr_in&>(local);
  const auto& v6 = reinterpret_cast<const sockaddr_in6&>(local);
  const bool isV6 = local.ss_family == AF_INET6;
  const void* bytes = isV6 ? static_cast<const void*>(&v6.sin6_addr) : static_cast<const void*>(&v4.sin_addr);
  std::array<char, INET6_ADDRSTRLEN> text{};
  return ntohs(isV6 ? v6.sin6_port : v4.sin_port) == port &&
         inet_ntop(local.ss_family, bytes, text.data(), text.size()) && address == text.data();
}

// Null for a connection without TLS, and for a libcurl that does its TLS by another library.
SSL* tlsOf(CURL* handle) {
  curl_tlssessioninfo* session = nullptr;
  const bool known = curl_easy_getinfo(handle, CURLINFO_TLS_SSL_PTR, &session) == CURLE_OK && session &&
                     session->backend == CURLSSLBACKEND_OPENSSL;
  return known ? static_cast<SSL*>(session->internals) : nullptr;
}

}  // namespace

curl_socket_t CurlConnections::open(const curl_sockaddr& address, Clock::time_point now) {
  FileDescriptor opened(::socket(address.family, address.socktype | SOCK_CLOEXEC, address.protocol));
  if (!opened) {
    return CURL_SOCKET_BAD;
  }
  connections_.push_back({std::move(opened), now});
  return connections_.back().socket.get();
}

void CurlConnections::close(curl_socket_t socket) {
  std::erase_if(connections_, [=](const auto& connection) { return connection.socket.get() == socket; });
}

curl_socket_t CurlConnections::find(std::string_view localAddress, int localPort) const {
  const auto found = std::ranges::find_if(connections_, [=](const auto& connection) {
    return isLocalAddress(connection.socket.get(), localAddress, localPort);
  });
  return found == connections_.end() ? CURL_SOCKET_BAD : found->socket.get();
}

void CurlConnections::wasUsed(curl_socket_t socket, Clock::time_point now) {
  for (auto& connection : connections_) {
    if (connection.socket.get() == socket) {
      connection.lastUse = now;
    }
  }
}

CurlConnections::Clock::time_point CurlConnections::lastUse(curl_socket_t socket) const {
  const auto found = std::ranges::find_if(
      connections_, [=](const auto& connection) { return connection.socket.get() == socket; });
  return found == connections_.end() ? Clock::time_point() : found->lastUse;
}

bool hasUnreadInput(CURL* handle, curl_socket_t socket) {
  pollfd readable{socket, POLLIN, 0};
  SSL* tls = tlsOf(handle);
  return poll(&readable, 1, 0) != 0 || (tls && SSL_has_pending(tls) == 1);
}

bool speaksHttp2(CURL* handle) {
  const SSL* tls = tlsOf(handle);
  if (!tls) {
    return false;
  }
  const unsigned char* name = nullptr;
  unsigned length = 0;
  SSL_get0_alpn_selected(tls, &name, &length);
  return std::string_view(reinterpret_cast<const char*>(name), length) == "h2";
}

}  // namespace quillmar
