#include "tests/sandbox/support/raw_connection.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "tests/sandbox/support/loopback.h"

namespace quillmar::sandbox::test {

RawConnection::RawConnection(int port) : socket_{connectedSocket(SOCK_STREAM, port)} {}

RawConnection::~RawConnection() {
  if (socket_ >= 0) ::close(socket_);
}

bool RawConnection::send(const std::string& bytes) {
  for (std::size_t sent = 0; sent < bytes.size();) {
    const auto size = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (size <= 0) return false;
    sent += std::size_t(size);
  }
  return true;
}

bool RawConnection::readMore() {
  std::array<char, 4096> buffer;
  const auto size = ::recv(socket_, buffer.data(), buffer.size(), 0);
  if (size > 0) received_.append(buffer.data(), std::size_t(size));
  return size > 0;
}

std::string RawConnection::readAnswer() {
  static constexpr std::string_view field = "Content-Length: ";
  auto headEnd = received_.find("\r\n\r\n");
  for (; headEnd == std::string::npos; headEnd = received_.find("\r\n\r\n")) {
    if (!readMore()) return {};
  }
  const auto at = received_.find(field);
  const auto length = at < headEnd ? std::strtoul(received_.c_str() + at + field.size(), nullptr, 10) : 0;
  const auto whole = headEnd + 4 + length;
  while (received_.size() < whole) {
    if (!readMore()) return {};
  }
  auto answer = received_.substr(0, whole);
  received_.erase(0, whole);
  return answer;
}

std::string RawConnection::readToEnd() {
  while (readMore()) {
  }
  return std::exchange(received_, {});
}

int statusOf(const std::string& answer) {
  return answer.starts_with("HTTP/1.1 ") ? std::atoi(answer.c_str() + 9) : 0;
}

}  // namespace quillmar::sandbox::test
