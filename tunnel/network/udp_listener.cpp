#include "tunnel/network/udp_listener.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace quillmar::tunnel {
namespace {

// Queries hardly ever have more than 300 bytes. Longer datagrams than this are dropped.
constexpr std::size_t largestQuestion = 2048;
constexpr std::size_t mostAtOnce = 16;

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
  boost::asio::ip::udp::endpoint sender(std::size_t index) const {
    boost::asio::ip::udp::endpoint sender;
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
    for (std::size_t index = 0; index < count; ++index) {
      if (batch_.isWhole(index)) {
        answering_(batch_.message(index), [self = shared_from_this(), sender = batch_.sender(index)](
                                              const std::string& reply) { self->send(reply, sender); });
      }
    }
  }

  // A reply that does not fit into the socket's buffer is lost, as any datagram may be.
  void send(const std::string& reply, const boost::asio::ip::udp::endpoint& client) {
    boost::system::error_code ignored;
    socket_.send_to(boost::asio::buffer(reply), client, 0, ignored);
  }

  UdpSocket socket_;
  Answering answering_;
  Batch batch_;
};

UdpListener::UdpListener(UdpSocket socket, Answering answering)
    : receiver_(std::make_shared<Receiver>(std::move(socket), std::move(answering))) {
  receiver_->receive();
}

UdpListener::~UdpListener() { receiver_->stop(); }

}  // namespace quillmar::tunnel
