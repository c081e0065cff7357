#pragma once

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <string_view>

namespace quillmar::sandbox {

using Error = boost::system::error_code;

// A TCP connection, plain or over TLS. All operations end with one type of function: Asio's would be compiled
// again for each.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  using Socket = boost::asio::ip::tcp::socket;
  using Done = std::function<void(Error, std::size_t)>;

  virtual ~Connection() = default;

  // At least one byte.
  virtual void read(boost::asio::mutable_buffer into, Done done) = 0;
  // All bytes, which must stay until `done`.
  virtual void write(std::string_view bytes, Done done) = 0;

  // What is under way at its end fails. Replaces the limit before.
  void closeAfter(std::chrono::seconds limit);
  void closeNever() { limit_.cancel(); }
  void close();

  // Closing a connection with unread bytes resets it, and the client would lose what was written last. So
  // this waits until the client closes, or sends nothing for a while.
  void closeGently();

 protected:
  explicit Connection(const Socket::executor_type& executor) : limit_{executor} {}

 private:
  virtual Socket& socket() = 0;
  void drain();

  boost::asio::steady_timer limit_;
  std::array<char, 4096> drained_{};
};

[[nodiscard]] std::shared_ptr<Connection> plainConnection(Connection::Socket socket);

// After the handshake; not if that fails.
using Greeted = std::function<void(std::shared_ptr<Connection>, bool http2)>;
void acceptTls(Connection::Socket socket, boost::asio::ssl::context& context, Greeted greeted);

// Has the handshake choose HTTP/2 with clients that speak it.
void offerHttp2(boost::asio::ssl::context& context);

}  // namespace quillmar::sandbox
