#include "tunnel/link/netlink_watch.h"

#include <sys/socket.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "tunnel/link/netlink.h"

namespace quillmar::tunnel {

NetlinkWatch::NetlinkWatch(boost::asio::io_context& context, int protocol, std::uint32_t groups,
                           Received received)
    : socket_(context), received_(std::move(received)) {
  if (auto socket = netlink::open(protocol, groups, false)) {
    socket_.assign(socket.release());
    wait();
  }
}

void NetlinkWatch::wait() {
  socket_.async_wait(boost::asio::posix::stream_descriptor::wait_read,
                     [this](boost::system::error_code error) {
                       if (!error) {
                         read();
                         wait();
                       }
                     });
}

void NetlinkWatch::read() {
  std::vector<char> buffer(netlink::largestRead);
  for (;;) {
    const auto size = ::recv(socket_.native_handle(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (size < 0 && errno == ENOBUFS) {
      received_(std::nullopt);
    } else if (size <= 0) {
      return;
    } else {
      received_(std::string_view{buffer.data(), static_cast<std::size_t>(size)});
    }
  }
}

}  // namespace quillmar::tunnel
