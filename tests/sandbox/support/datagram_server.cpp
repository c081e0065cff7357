#include "tests/sandbox/support/datagram_server.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace quillmar::sandbox::test {

DatagramServer::DatagramServer(Answering answering)
    : answering_(std::move(answering)),
      socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)),
      stop_(::eventfd(0, EFD_CLOEXEC)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (::bind(socket_, reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
      ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no port");
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { serve(); });
}

DatagramServer::~DatagramServer() {
  ::eventfd_write(stop_, 1);
  thread_.join();
  ::close(stop_);
  ::close(socket_);
}

void DatagramServer::serve() {
  std::array<pollfd, 2> watched{pollfd{socket_, POLLIN, 0}, pollfd{stop_, POLLIN, 0}};
  while (::poll(watched.data(), watched.size(), -1) > 0 && watched[1].revents == 0) {
    std::array<char, 2048> buffer{};
    sockaddr_in from{};
    socklen_t size = sizeof from;
    const auto length =
        ::recvfrom(socket_, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&from), &size);
    const std::string_view received(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    for (const auto& reply : answering_(received)) {
      ::sendto(socket_, reply.data(), reply.size(), 0, reinterpret_cast<const sockaddr*>(&from), size);
    }
  }
}

}  // namespace quillmar::sandbox::test
