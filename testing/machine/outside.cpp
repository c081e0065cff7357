#include "testing/machine/outside.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <string_view>

#include "tunnel/dns/query.h"
#include "tunnel/dns/reply.h"
#include "tunnel/dns/wire.h"

namespace quillmar::machine {
namespace {

using namespace tunnel;

constexpr std::uint16_t markPort = 9;
// Reached only if something is broken.
constexpr std::chrono::seconds patience{30};

std::string dotted(std::string_view wire) {
  std::string name;
  while (!wire.empty() && wire.front() != '\0') {
    const auto size = static_cast<std::size_t>(wire.front());
    name += (name.empty() ? "" : ".") + std::string(wire.substr(1, size));
    wire.remove_prefix(size + 1);
  }
  return name;
}

std::string nameIn(std::string_view message) {
  const auto parsed = parseQuery(message);
  const auto* query = std::get_if<Query>(&parsed);
  return query != nullptr ? dotted(query->question.name) : std::string();
}

// Returns the IP protocol of an Ethernet frame and its payload after both headers.
std::pair<int, std::string_view> transportOf(std::string_view frame) {
  constexpr std::size_t ethernet = 14;
  constexpr std::size_t ip6Header = 40;
  if (frame.size() < ethernet + 20) {
    return {};
  }
  const auto kind = get16(frame, 12);
  const auto packet = frame.substr(ethernet);
  if (kind == ETHERTYPE_IP) {
    return {packet[9], packet.substr(static_cast<std::size_t>(packet[0] & 0x0f) * 4)};
  }
  if (kind == ETHERTYPE_IPV6 && packet.size() > ip6Header) {
    return {packet[6], packet.substr(ip6Header)};
  }
  return {};
}

// A reply with the address; without records unless the question is for IPv4.
std::string replyWith(const Query& query, const std::string& address) {
  constexpr std::size_t answersAt = 6;
  constexpr std::uint32_t life = 300;
  in_addr bytes{};
  ::inet_pton(AF_INET, address.c_str(), &bytes);
  auto reply = emptyReply(query, rcode::noError);
  if (query.question.type == type::a) {
    reply += query.question.name;
    append16(reply, query.question.type);
    append16(reply, internetClass);
    append32(reply, life);
    append16(reply, sizeof bytes);
    reply.append(reinterpret_cast<const char*>(&bytes), sizeof bytes);
    put16(reply, answersAt, 1);
  }
  return reply;
}

// Runs `work` on a thread of this network namespace.
template <class Work>
void inside(const std::string& networkNamespace, const Work& work) {
  std::exception_ptr problem;
  std::thread([&] {
    try {
      const int file = ::open(networkNamespace.c_str(), O_RDONLY | O_CLOEXEC);
      const bool entered = ::setns(file, CLONE_NEWNET) == 0;
      ::close(file);
      if (!entered) {
        throw std::runtime_error("no such network namespace");
      }
      work();
    } catch (...) {
      problem = std::current_exception();
    }
  }).join();
  if (problem) {
    std::rethrow_exception(problem);
  }
}

}  // namespace

Outside::Outside(const std::string& networkNamespace, const std::string& wire)
    : stop_(::eventfd(0, EFD_CLOEXEC)) {
  // A socket stays in the network namespace in which it was created.
  inside(networkNamespace, [&] {
    packets_ = ::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, htons(ETH_P_ALL));
    sockaddr_ll link{};
    link.sll_family = AF_PACKET;
    link.sll_protocol = htons(ETH_P_ALL);
    link.sll_ifindex = static_cast<int>(::if_nametoindex(wire.c_str()));
    server_ = ::socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in6 any{};
    any.sin6_family = AF_INET6;
    any.sin6_port = htons(53);
    const int on = 1;
    ::setsockopt(server_, IPPROTO_IPV6, IPV6_RECVPKTINFO, &on, sizeof on);
    if (::bind(packets_, reinterpret_cast<const sockaddr*>(&link), sizeof link) != 0 ||
        ::bind(server_, reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0) {
      throw std::runtime_error("the outside can't listen");
    }
  });
  capturing_ = std::thread([this] { capture(); });
  serving_ = std::thread([this] { serve(); });
}

Outside::~Outside() {
  ::eventfd_write(stop_, 1);
  capturing_.join();
  serving_.join();
  for (const int file : {packets_, server_, stop_}) {
    ::close(file);
  }
}

void Outside::give(const std::string& name, const std::string& address) {
  const std::scoped_lock lock(mutex_);
  addresses_[name] = address;
}

void Outside::capture() {
  std::array<char, 65'536> buffer{};
  std::array<pollfd, 2> files{pollfd{packets_, POLLIN, 0}, pollfd{stop_, POLLIN, 0}};
  while (::poll(files.data(), files.size(), -1) > 0 && files[1].revents == 0) {
    sockaddr_ll from{};
    socklen_t size = sizeof from;
    const auto got =
        ::recvfrom(packets_, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&from), &size);
    if (got > 0 && from.sll_pkttype != PACKET_OUTGOING) {
      take({buffer.data(), static_cast<std::size_t>(got)});
    }
  }
}

void Outside::take(const std::string& frame) {
  const auto [protocol, transport] = transportOf(frame);
  constexpr std::size_t udpHeader = 8;
  if ((protocol != IPPROTO_UDP && protocol != IPPROTO_TCP) || transport.size() < udpHeader) {
    return;
  }
  const auto port = get16(transport, 2);
  const std::scoped_lock lock(mutex_);
  if (protocol == IPPROTO_TCP) {
    follow(transport);
  }
  if (port == 53 || port == 853) {
    const bool isUdp = protocol == IPPROTO_UDP;
    seen_.push_back((isUdp ? "udp " : "tcp ") + std::to_string(port) +
                    (isUdp ? ' ' + nameIn(transport.substr(udpHeader)) : ""));
  } else if (port == markPort && protocol == IPPROTO_UDP) {
    ++marks_[std::string(transport.substr(udpHeader))];
    changed_.notify_all();
  } else if (protocol == IPPROTO_UDP) {
    asked_.emplace(port, nameIn(transport.substr(udpHeader)));
    changed_.notify_all();
  }
}

void Outside::follow(std::string_view segment) {
  constexpr std::size_t headerSizeAt = 12;
  constexpr std::size_t flagsAt = 13;
  constexpr unsigned fin = 1;
  constexpr unsigned syn = 2;
  constexpr unsigned reset = 4;
  if (segment.size() <= flagsAt) {
    return;
  }
  const auto byteAt = [&](std::size_t place) { return static_cast<unsigned char>(segment[place]); };
  const unsigned flags = byteAt(flagsAt);
  const std::size_t headerSize = std::size_t{byteAt(headerSizeAt)} / 16 * 4;
  auto& conversation = conversations_[get16(segment, 0)];
  if ((flags & syn) != 0) {
    conversation.port = get16(segment, 2);
    conversation.hasEnded = false;
  }
  conversation.sent += (flags & syn) != 0 || segment.size() > headerSize ? 1 : 0;
  conversation.hasEnded = conversation.hasEnded || (flags & (fin | reset)) != 0;
  changed_.notify_all();
}

int Outside::sentTo(std::uint16_t port) {
  const std::scoped_lock lock(mutex_);
  int sent = 0;
  for (const auto& [from, conversation] : conversations_) {
    sent += conversation.port == port ? conversation.sent : 0;
  }
  return sent;
}

bool Outside::seesAllEnd(std::uint16_t port) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, patience, [&] {
    return std::ranges::all_of(conversations_, [&](const auto& known) {
      return known.second.port != port || known.second.hasEnded;
    });
  });
}

std::vector<std::string> Outside::seenInClear(const std::function<void(const std::string&)>& mark) {
  std::unique_lock lock(mutex_);
  const auto token = "mark " + std::to_string(++lastMark_);
  lock.unlock();
  mark(token);
  lock.lock();
  // One mark over IPv4 and one over IPv6.
  if (!changed_.wait_for(lock, patience, [&] { return marks_[token] == 2; })) {
    return {std::to_string(marks_[token]) + " of two marks came"};
  }
  return seen_;
}

void Outside::forget() {
  const std::scoped_lock lock(mutex_);
  seen_.clear();
  asked_.clear();
}

bool Outside::seesAsked(std::uint16_t port, const std::string& name) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, patience, [&] { return asked_.contains({port, name}); });
}

void Outside::serve() {
  std::array<char, 4096> buffer{};
  std::array<pollfd, 2> files{pollfd{server_, POLLIN, 0}, pollfd{stop_, POLLIN, 0}};
  while (::poll(files.data(), files.size(), -1) > 0 && files[1].revents == 0) {
    sockaddr_storage from{};
    std::array<char, 256> control{};
    iovec piece{buffer.data(), buffer.size()};
    msghdr received{&from, sizeof from, &piece, 1, control.data(), control.size(), 0};
    const auto got = ::recvmsg(server_, &received, 0);
    const std::string_view message(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    const auto parsed = parseQuery(message);
    const auto* query = std::get_if<Query>(&parsed);
    if (query == nullptr) {
      continue;
    }
    const auto name = dotted(query->question.name);
    std::string address = answer;
    {
      const std::scoped_lock lock(mutex_);
      if (const auto given = addresses_.find(name); given != addresses_.end()) {
        address = given->second;
      }
    }
    if (address.empty()) {
      continue;
    }
    auto reply = replyWith(*query, address);
    // The control message makes the reply come from the queried address.
    iovec sent{reply.data(), reply.size()};
    received.msg_iov = &sent;
    ::sendmsg(server_, &received, 0);
  }
}

}  // namespace quillmar::machine
