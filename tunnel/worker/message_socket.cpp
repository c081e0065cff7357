#include "tunnel/worker/message_socket.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "tunnel/worker/messages.h"

namespace quillmar::tunnel {

MessageSocket::MessageSocket(boost::asio::io_context& context, int descriptor, Events events)
    : socket_(context, descriptor), events_(std::move(events)) {
  wait();
}

bool MessageSocket::send(const std::string& message) {
  return ::send(socket_.native_handle(), message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL) >= 0;
}

// Reads one message per turn of the loop, so that a flood of messages does not block other handlers.
void MessageSocket::wait() {
  socket_.async_wait(boost::asio::posix::stream_descriptor::wait_read,
                     [this, isOpen = isOpen_](boost::system::error_code error) {
                       if (!error && *isOpen) {
                         receive();
                       }
                       if (!error && *isOpen && !isGone_) {
                         wait();
                       }
                     });
}

void MessageSocket::hearOut() {
  while (receive()) {
  }
}

bool MessageSocket::receive() {
  std::array<char, largestWorkerMessage> buffer;  // NOLINT(*-member-init): it is written before it is read
  const auto size = ::recv(socket_.native_handle(), buffer.data(), buffer.size(), MSG_DONTWAIT);
  if (size > 0) {
    events_.came({buffer.data(), static_cast<std::size_t>(size)});
  } else if (size == 0 || (errno != EAGAIN && errno != EINTR)) {
    isGone_ = true;
    events_.isGone();
  }
  return size > 0;
}

}  // namespace quillmar::tunnel
