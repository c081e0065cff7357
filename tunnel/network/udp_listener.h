#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tunnel/network/sockets.h"

namespace quillmar::tunnel {

// Whoever answers a message; the reply may come at once, later or never.
using Answering = std::function<void(std::string_view message, std::function<void(std::string)> reply)>;

// Takes questions as datagrams and sends each reply to where its question came from. What is under way when
// it goes is not sent any more.
class UdpListener {
 public:
  UdpListener(UdpSocket socket, Answering answering);
  UdpListener(const UdpListener&) = delete;
  UdpListener& operator=(const UdpListener&) = delete;
  ~UdpListener();

 private:
  class Receiver;
  const std::shared_ptr<Receiver> receiver_;
};

}  // namespace quillmar::tunnel
