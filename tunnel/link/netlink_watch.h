#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace quillmar::tunnel {

// Receives the kernel's notifications of some groups of a netlink protocol.
class NetlinkWatch {
 public:
  // Called with the messages of one read; nullopt if the kernel dropped some.
  using Received = std::function<void(std::optional<std::string_view> messages)>;

  NetlinkWatch(boost::asio::io_context& context, int protocol, std::uint32_t groups, Received received);

  // Whether this machine sends notifications.
  bool works() const { return socket_.is_open(); }

 private:
  void wait();
  void read();

  boost::asio::posix::stream_descriptor socket_;
  const Received received_;
};

}  // namespace quillmar::tunnel
