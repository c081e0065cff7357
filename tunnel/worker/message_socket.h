#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace quillmar::tunnel {

// One end of the pair of sockets between service and worker, which keeps messages apart.
class MessageSocket {
 public:
  // Of each message; `isGone` once there will be none any more. What is too long comes cut, and is no
  // message.
  struct Events {
    std::function<void(std::string_view)> came;
    std::function<void()> isGone;
  };

  // Of a descriptor that is its own from now on.
  MessageSocket(boost::asio::io_context& context, int descriptor, Events events);
  MessageSocket(const MessageSocket&) = delete;
  MessageSocket& operator=(const MessageSocket&) = delete;
  // Nobody is called any more.
  ~MessageSocket() { *isOpen_ = false; }

  // False where the other end is gone, or does not read.
  bool send(const std::string& message);
  // What has come already, before anything else happens.
  void hearOut();

 private:
  void wait();
  // Whether there was a message.
  bool receive();

  boost::asio::posix::stream_descriptor socket_;
  const Events events_;
  bool isGone_ = false;
  const std::shared_ptr<bool> isOpen_ = std::make_shared<bool>(true);
};

}  // namespace quillmar::tunnel
