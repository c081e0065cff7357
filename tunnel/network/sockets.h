#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>
#include <optional>
#include <string_view>
#include <variant>

namespace quillmar::tunnel {

using TcpAcceptor = boost::asio::ip::tcp::acceptor;
using UdpSocket = boost::asio::ip::udp::socket;

// "127.0.0.1", "127.0.0.1:5353", "::1", "[::1]:5353". The port is 53 unless given.
std::optional<boost::asio::ip::tcp::endpoint> parseListenAddress(std::string_view text);

// Both are bound to the same port. Port 0 chooses a free one.
struct Sockets {
  UdpSocket udp;
  TcpAcceptor tcp;
};
// Whether the address has to exist already when the sockets are bound.
enum class Presence { now, later };
std::variant<Sockets, boost::system::error_code> bindSockets(boost::asio::io_context& context,
                                                             const boost::asio::ip::tcp::endpoint& address,
                                                             Presence presence = Presence::now);

}  // namespace quillmar::tunnel
