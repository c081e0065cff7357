#include "sandbox/http/client.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>

namespace quillmar::sandbox {

namespace http = boost::beast::http;
using boost::asio::ip::tcp;

Outcome<Answer> post(int port, const std::string& target, const std::string& body) {
  boost::asio::io_context network;
  boost::beast::tcp_stream stream{network};
  boost::system::error_code error;
  const tcp::endpoint service{boost::asio::ip::address_v4::loopback(), static_cast<unsigned short>(port)};
  stream.connect(service, error);
  if (error) {
    return Failure{"No service answers on port " + std::to_string(port) + ". Is it running?"};
  }

  http::request<http::string_body> request{http::verb::post, target, 11};
  request.set(http::field::host, "127.0.0.1:" + std::to_string(port));
  request.set(http::field::content_type, "application/json");
  request.body() = body;
  request.prepare_payload();
  http::write(stream, request, error);

  boost::beast::flat_buffer buffer;
  http::response<http::string_body> response;
  if (!error) {
    http::read(stream, buffer, response, error);
  }
  if (error) {
    return Failure{"The service on port " + std::to_string(port) + " gave no answer."};
  }
  return Answer{.status = int(response.result_int()), .body = response.body()};
}

}  // namespace quillmar::sandbox
