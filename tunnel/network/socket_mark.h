#pragma once

#include <sys/socket.h>

#include <boost/system/error_code.hpp>
#include <cerrno>
#include <cstdint>

namespace quillmar::tunnel {

// The number by which the kernel's rules know traffic of this program; zero for none.
class SocketMark {
 public:
  constexpr SocketMark() = default;
  constexpr explicit SocketMark(std::uint32_t value) : value_(value) {}

  // Of an open socket, before anything is sent.
  template <class Socket>
  boost::system::error_code put(Socket& socket) const {
    const bool done =
        value_ == 0 || ::setsockopt(socket.native_handle(), SOL_SOCKET, SO_MARK, &value_, sizeof value_) == 0;
    return done ? boost::system::error_code()
                : boost::system::error_code(errno, boost::system::system_category());
  }

 private:
  std::uint32_t value_ = 0;
};

}  // namespace quillmar::tunnel
