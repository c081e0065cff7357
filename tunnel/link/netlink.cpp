#include "tunnel/link/netlink.h"

#include <linux/netlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

namespace quillmar::tunnel::netlink {
namespace {

constexpr std::size_t alignment = 4;

std::size_t aligned(std::size_t size) { return (size + alignment - 1) / alignment * alignment; }

template <class T>
T read(std::string_view bytes) {
  T value{};
  std::memcpy(&value, bytes.data(), sizeof value);
  return value;
}

}  // namespace

void appendAttribute(std::string& payload, std::uint16_t type, std::string_view value) {
  appendStruct(payload, nlattr{static_cast<std::uint16_t>(sizeof(nlattr) + value.size()), type});
  payload += value;
  payload.resize(aligned(payload.size()));
}

std::optional<std::string_view> attribute(std::string_view attributes, std::uint16_t type) {
  while (attributes.size() >= sizeof(nlattr)) {
    const auto header = read<nlattr>(attributes);
    if (header.nla_len < sizeof(nlattr) || header.nla_len > attributes.size()) {
      break;
    }
    if ((header.nla_type & NLA_TYPE_MASK) == type) {
      return attributes.substr(sizeof(nlattr), header.nla_len - sizeof(nlattr));
    }
    attributes.remove_prefix(std::min(aligned(header.nla_len), attributes.size()));
  }
  return std::nullopt;
}

void visit(std::string_view received, const Visit& visit) {
  while (received.size() >= sizeof(nlmsghdr)) {
    const auto header = read<nlmsghdr>(received);
    if (header.nlmsg_len < sizeof(nlmsghdr) || header.nlmsg_len > received.size()) {
      break;
    }
    visit(header.nlmsg_type, received.substr(sizeof(nlmsghdr), header.nlmsg_len - sizeof(nlmsghdr)));
    received.remove_prefix(std::min(aligned(header.nlmsg_len), received.size()));
  }
}

OpenFile open(int protocol, std::uint32_t groups, bool waits) {
  OpenFile socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | (waits ? 0 : SOCK_NONBLOCK), protocol));
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = groups;
  const auto* const bound = reinterpret_cast<const sockaddr*>(&address);
  return ::bind(socket.get(), bound, sizeof address) == 0 ? std::move(socket) : OpenFile();
}

int Requests::send(std::uint16_t type, std::uint16_t flags, const std::string& payload) {
  std::string message;
  appendStruct(message, nlmsghdr{static_cast<std::uint32_t>(sizeof(nlmsghdr) + payload.size()), type,
                                 static_cast<std::uint16_t>(NLM_F_REQUEST | flags), ++sequence_, 0});
  message += payload;
  return ::send(socket_.get(), message.data(), message.size(), 0) < 0 ? errno : 0;
}

// Reads messages up to the end of the answer, and returns its error.
int Requests::receive(const Visit& visit) {
  std::vector<char> buffer(largestRead);
  std::optional<int> end;
  while (!end) {
    const auto size = ::recv(socket_.get(), buffer.data(), buffer.size(), 0);
    if (size < 0 && errno != EINTR) {
      return errno;
    }
    netlink::visit({buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))},
                   [&](std::uint16_t type, std::string_view payload) {
                     if (type == NLMSG_ERROR || type == NLMSG_DONE) {
                       end = payload.size() < sizeof(int) ? 0 : -read<int>(payload);
                     } else {
                       visit(type, payload);
                     }
                   });
  }
  return *end;
}

int Requests::request(std::uint16_t type, const std::string& payload) {
  const int failed = send(type, NLM_F_ACK, payload);
  return failed != 0 ? failed : receive([](std::uint16_t, std::string_view) {});
}

int Requests::dump(std::uint16_t type, const std::string& payload, const Visit& visit) {
  const int failed = send(type, NLM_F_DUMP, payload);
  return failed != 0 ? failed : receive(visit);
}

}  // namespace quillmar::tunnel::netlink
