#include "tunnel/network/udp_listener.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

namespace quillmar::tunnel {
namespace {

// Queries hardly ever have more than 300 bytes. Longer datagrams than this are dropped.
constexpr std::size_t largestQuestion = 2048;
constexpr std::size_t mostAtOnce = 16;

using SocketAddress = boost::asio::ip::udp::endpoint;

// Several datagrams, received by one system call.
class Batch {
 public:
  Batch() {
    for (std::size_t index = 0; index < mostAtOnce; ++index) {
      pieces_[index] = {buffers_[index].data(), largestQuestion};
      auto& header = messages_[index].msg_hdr;
      header.msg_name = &senders_[index];
      header.msg_iov = &pieces_[index];
      header.msg_iovlen = 1;
    }
  }
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;

  // Returns their number.
  std::size_t receive(int socket) {
    for (auto& message : messages_) {
      message.msg_hdr.msg_namelen = sizeof(sockaddr_storage);
    }
    const int count = ::recvmmsg(socket, messages_.data(), mostAtOnce, MSG_DONTWAIT, nullptr);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  bool isWhole(std::size_t index) const { return (messages_[index].msg_hdr.msg_flags & MSG_TRUNC) == 0; }
  std::string_view message(std::size_t index) const {
    return {buffers_[index].data(), messages_[index].msg_len};
  }
  SocketAddress sender(std::size_t index) const {
    SocketAddress sender;
    // The endpoint's size follows from the family in the copied bytes.
    std::memcpy(sender.data(), &senders_[index],
                std::min<std::size_t>(messages_[index].msg_hdr.msg_namelen, sender.capacity()));
    return sender;
  }

 private:
  std::array<std::array<char, largestQuestion>, mostAtOnce> buffers_{};
  std::array<sockaddr_storage, mostAtOnce> senders_{};
  std::array<iovec, mostAtOnce> pieces_{};
  std::array<mmsghdr, mostAtOnce> messages_{};
};

// Replies that are sent by one system call. One that can't be sent is lost, as any datagram may be.
class Outbox {
 public:
  void add(std::string reply, const SocketAddress& client) { replies_.push_back({std::move(reply), client}); }

  void send(int socket) {
    pieces_.resize(replies_.size());
    messages_.resize(replies_.size());
    for (std::size_t index = 0; index < replies_.size(); ++index) {
      auto& [reply, client] = replies_[index];
      pieces_[index] = {reply.data(), reply.size()};
      auto& header = messages_[index].msg_hdr;
      header.msg_name = client.data();
      header.msg_namelen = static_cast<socklen_t>(client.size());
      header.msg_iov = &pieces_[index];
      header.msg_iovlen = 1;
    }
    for (std::size_t sent = 0; sent < messages_.size();) {
      const auto left = static_cast<unsigned>(messages_.size() - sent);
      const int count = ::sendmmsg(socket, &messages_[sent], left, MSG_DONTWAIT);
      sent += count > 0 ? static_cast<std::size_t>(count) : 1;
    }
    replies_.clear();
  }

 private:
  struct Reply {
    std::string text;
    SocketAddress client;
  };
  std::vector<Reply> replies_;
  std::vector<iovec> pieces_;
  std::vector<mmsghdr> messages_;
};

}  // namespace

class UdpListener::Receiver : public std::enable_shared_from_this<Receiver> {
 public:
  Receiver(UdpSocket socket, Answering answering)
      : socket_(std::move(socket)), answering_(std::move(answering)) {}

  void receive() {
    socket_.async_wait(UdpSocket::wait_read, [self = shared_from_this()](boost::system::error_code error) {
      if (!error && self->answering_) {
        self->takeBatch();
        self->receive();
      }
    });
  }

  void stop() {
    boost::system::error_code ignored;
    socket_.close(ignored);
    answering_ = nullptr;
  }

 private:
  void takeBatch() {
    const auto count = batch_.receive(socket_.native_handle());
    isTaking_ = true;
    for (std::size_t index = 0; index < count; ++index) {
      if (batch_.isWhole(index)) {
        answering_(batch_.message(index), [self = shared_from_this(), sender = batch_.sender(index)](
                                              std::string reply) { self->send(std::move(reply), sender); });
      }
    }
    isTaking_ = false;
    outbox_.send(socket_.native_handle());
  }

  // Replies that are known at once are sent together.
  void send(std::string reply, const SocketAddress& client) {
    if (isTaking_) {
      return outbox_.add(std::move(reply), client);
    }
    ::sendto(socket_.native_handle(), reply.data(), reply.size(), MSG_DONTWAIT, client.data(),
             static_cast<socklen_t>(client.size()));
  }

  UdpSocket socket_;
  Answering answering_;
  Batch batch_;
  Outbox outbox_;
  bool isTaking_ = false;
};

UdpListener::UdpListener(UdpSocket socket, Answering answering)
    : receiver_(std::make_shared<Receiver>(std::move(socket), std::move(answering))) {
  receiver_->receive();
}

UdpListener::~UdpListener() { receiver_->stop(); }

}  // namespace quillmar::tunnel
