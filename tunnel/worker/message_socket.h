#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace quillmar::tunnel {

// One end of a SOCK_SEQPACKET pair between service and worker.
class MessageSocket {
 public:
  // `came` is called for each message, `isGone` once when the other end has closed. A message that is too
  // long is truncated, which makes it invalid.
  struct Events {
    std::function<void(std::string_view)> came;
    std::function<void()> isGone;
  };

  // Takes ownership of the descriptor.
  MessageSocket(boost::asio::io_context& context, int descriptor, Events events);
  MessageSocket(const MessageSocket&) = delete;
  MessageSocket& operator=(const MessageSocket&) = delete;
  // No event is called after this.
  ~MessageSocket() { *isOpen_ = false; }

  // False if the other end has closed or its buffer is full.
  bool send(const std::string& message);
  // Handles all messages that have already arrived.
  void hearOut();

 private:
  void wait();
  // Returns whether there was a message.
  bool receive();

  boost::asio::posix::stream_descriptor socket_;
  const Events events_;
  bool isGone_ = false;
  const std::shared_ptr<bool> isOpen_ = std::make_shared<bool>(true);
};

}  // namespace quillmar::tunnel
