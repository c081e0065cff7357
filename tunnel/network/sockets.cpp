#include "tunnel/network/sockets.h"

#include <netinet/in.h>

#include <charconv>
#include <cstdint>

namespace quillmar::tunnel {
namespace {

namespace ip = boost::asio::ip;
using ErrorCode = boost::system::error_code;

constexpr std::uint16_t dnsPort = 53;

std::optional<std::uint16_t> portIn(std::string_view text) {
  std::uint16_t port = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), port);
  const bool isWhole = !text.empty() && read.ec == std::errc() && read.ptr == text.data() + text.size();
  return isWhole ? std::optional(port) : std::nullopt;
}

// For bursts of queries.
constexpr int receiveBuffer = 512 * 1024;

// IP_FREEBIND works for IPv6 sockets too.
using FreeBind = boost::asio::detail::socket_option::boolean<IPPROTO_IP, IP_FREEBIND>;

ErrorCode bindBoth(Sockets& sockets, const ip::tcp::endpoint& address, Presence presence) {
  ErrorCode error;
  sockets.tcp.open(address.protocol(), error);
  if (!error) {
    sockets.tcp.set_option(TcpAcceptor::reuse_address(true), error);
    sockets.tcp.set_option(FreeBind(presence == Presence::later), error);
    sockets.tcp.bind(address, error);
  }
  if (!error) {
    sockets.tcp.listen(boost::asio::socket_base::max_listen_connections, error);
  }
  const ip::udp::endpoint same(address.address(), error ? 0 : sockets.tcp.local_endpoint().port());
  if (!error) {
    sockets.udp.open(same.protocol(), error);
  }
  if (!error) {
    ErrorCode ignored;
    sockets.udp.set_option(boost::asio::socket_base::receive_buffer_size(receiveBuffer), ignored);
    sockets.udp.non_blocking(true, ignored);
    sockets.udp.set_option(FreeBind(presence == Presence::later), error);
    sockets.udp.bind(same, error);
  }
  return error;
}

}  // namespace

std::optional<ip::tcp::endpoint> parseListenAddress(std::string_view text) {
  std::string_view host = text;
  std::optional<std::uint16_t> port = dnsPort;
  const auto colon = text.rfind(':');
  if (text.starts_with('[')) {
    const auto bracket = text.find(']');
    host = text.substr(1, bracket == std::string_view::npos ? 0 : bracket - 1);
    if (bracket + 1 < text.size()) {
      port = text[bracket + 1] == ':' ? portIn(text.substr(bracket + 2)) : std::nullopt;
    }
  } else if (colon != std::string_view::npos && text.find(':') == colon) {
    host = text.substr(0, colon);
    port = portIn(text.substr(colon + 1));
  }
  ErrorCode error;
  const auto address = ip::make_address(host, error);
  return error || !port ? std::nullopt : std::optional(ip::tcp::endpoint(address, *port));
}

std::variant<Sockets, ErrorCode> bindSockets(boost::asio::io_context& context,
                                             const ip::tcp::endpoint& address, Presence presence) {
  // A port that is free for TCP may be in use for UDP.
  const int attempts = address.port() == 0 ? 16 : 1;
  ErrorCode error;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    Sockets sockets{UdpSocket(context), TcpAcceptor(context)};
    error = bindBoth(sockets, address, presence);
    if (!error) {
      return sockets;
    }
  }
  return error;
}

}  // namespace quillmar::tunnel
