#include "sandbox/http/client.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

namespace quillmar::sandbox {
namespace {

namespace http = boost::beast::http;
namespace net = boost::asio;
using net::ip::tcp;

// All that the service says until it closes the connection.
std::string exchanged(tcp::socket& socket, const std::string& request, boost::system::error_code& error) {
  std::string received;
  net::write(socket, net::buffer(request), error);
  if (!error) {
    net::read(socket, net::dynamic_buffer(received), error);
  }
  if (error == net::error::eof) {
    error = {};
  }
  return received;
}

}  // namespace

Outcome<Answer> post(int port, const std::string& target, const std::string& body) {
  net::io_context network;
  tcp::socket socket{network};
  boost::system::error_code error;
  socket.connect({net::ip::address_v4::loopback(), static_cast<unsigned short>(port)}, error);
  if (error) {
    return Failure{"No service answers on port " + std::to_string(port) + ". Is it running?"};
  }

  const auto received =
      exchanged(socket,
                "POST " + target + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
                    "\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
                    "\r\nConnection: close\r\n\r\n" + body,
                error);
  http::response_parser<http::string_body> parser;
  parser.eager(true);
  if (!error) {
    parser.put(net::buffer(received), error);
  }
  if (error || !parser.is_done()) {
    return Failure{"The service on port " + std::to_string(port) + " gave no answer."};
  }
  return Answer{.status = int(parser.get().result_int()), .body = parser.get().body()};
}

}  // namespace quillmar::sandbox
