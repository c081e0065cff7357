#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tunnel/network/sockets.h"

namespace quillmar::tunnel {

// Answers a message. The reply may come before this returns, later, or never.
using Answering = std::function<void(std::string_view message, std::function<void(std::string)> reply)>;

// Receives queries over UDP and sends the replies to their senders. After its destruction no reply is sent.
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
