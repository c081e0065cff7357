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

// "127.0.0.1", "127.0.0.1:5353", "::1", "[::1]:5353"; without a port DNS's own.
std::optional<boost::asio::ip::tcp::endpoint> parseListenAddress(std::string_view text);

// Both on the same port, a free one where it is 0.
struct Sockets {
  UdpSocket udp;
  TcpAcceptor tcp;
};
// Whether the address has to be one of this machine's already.
enum class Presence { now, later };
std::variant<Sockets, boost::system::error_code> bindSockets(boost::asio::io_context& context,
                                                             const boost::asio::ip::tcp::endpoint& address,
                                                             Presence presence = Presence::now);

}  // namespace quillmar::tunnel
