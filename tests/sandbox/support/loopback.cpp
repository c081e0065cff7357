#include "tests/sandbox/support/loopback.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace quillmar::sandbox::test {

int connectedSocket(int type, int port) {
  const int socket = ::socket(AF_INET, type | SOCK_CLOEXEC, 0);
  const timeval timeout{.tv_sec = 30, .tv_usec = 0};
  ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
    return socket;
  }
  ::close(socket);
  return -1;
}

std::uint16_t freePort(std::uint32_t at) {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(at);
  socklen_t size = sizeof address;
  ::bind(socket, reinterpret_cast<const sockaddr*>(&address), size);
  ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
  ::close(socket);
  return ntohs(address.sin_port);
}

}  // namespace quillmar::sandbox::test
