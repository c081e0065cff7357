#include "programs/doctor/dns_question.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>

#include "platform/common/file_descriptor.h"

namespace quillmar::doctor {
namespace {

using namespace std::string_view_literals;

constexpr std::uint16_t dnsPort = 53;
constexpr std::size_t idSize = 2;
constexpr std::size_t headerSize = 12;
constexpr std::size_t flagsAt = 3;
constexpr unsigned codeMask = 0xf;
constexpr unsigned serverFailure = 2;
constexpr unsigned refusal = 5;

in_addr addressFrom(const std::string& text) {
  in_addr address{};
  inet_pton(AF_INET, text.c_str(), &address);
  return address;
}

// A query (RFC 1035): recursion desired, one question, type A, class IN. The id is 0, because each query has
// its own socket.
std::string questionFor(std::string_view name) {
  std::string message(idSize, '\0');
  message += "\x01\x00\x00\x01\x00\x00\x00\x00\x00\x00"sv;
  while (!name.empty()) {
    const auto label = name.substr(0, name.find('.'));
    message += static_cast<char>(label.size());
    message += label;
    name.remove_prefix(std::min(name.size(), label.size() + 1));
  }
  return message + std::string("\x00\x00\x01\x00\x01"sv);
}

void limitWaiting(const FileDescriptor& socket, std::chrono::milliseconds timeout) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(timeout);
  const timeval limit{
      .tv_sec = seconds.count(),
      .tv_usec = std::chrono::duration_cast<std::chrono::microseconds>(timeout - seconds).count()};
  setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
}

// A connected socket reports ICMP errors, and receives only from the server.
bool connectTo(const std::string& server, const FileDescriptor& socket) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(dnsPort);
  address.sin_addr = addressFrom(server);
  return connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace

DnsReply askServer(const std::string& server, std::string_view name, std::chrono::milliseconds timeout) {
  const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  limitWaiting(socket, timeout);
  const std::string question = questionFor(name);
  if (!connectTo(server, socket) || send(socket.get(), question.data(), question.size(), MSG_NOSIGNAL) < 0) {
    return errno;
  }
  std::array<char, 4096> buffer{};
  const auto size = recv(socket.get(), buffer.data(), buffer.size(), 0);
  if (size < 0) {
    return errno == EAGAIN || errno == EWOULDBLOCK ? 0 : errno;
  }
  std::string reply(buffer.data(), static_cast<std::size_t>(size));
  const bool isToQuestion = reply.size() >= headerSize && reply.compare(0, idSize, question, 0, idSize) == 0;
  return isToQuestion ? DnsReply(std::move(reply)) : DnsReply(0);
}

bool isLookedUp(const DnsReply& reply) {
  const auto* message = std::get_if<std::string>(&reply);
  if (message == nullptr) {
    return false;
  }
  const unsigned code = static_cast<unsigned char>((*message)[flagsAt]) & codeMask;
  return code != serverFailure && code != refusal;
}

bool endsWithAddress(std::string_view message, const std::string& address) {
  const in_addr wanted = addressFrom(address);
  return message.ends_with({reinterpret_cast<const char*>(&wanted), sizeof wanted});
}

}  // namespace quillmar::doctor
