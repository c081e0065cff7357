#include "sandbox/http/connection.h"

#include <array>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/stream_traits.hpp>
#include <cstring>
#include <utility>

namespace quillmar::sandbox {
namespace {

namespace net = boost::asio;
using TlsStream = net::ssl::stream<Connection::Socket>;

constexpr std::chrono::seconds handshakeLimit{15};
constexpr std::chrono::seconds silenceLimit{2};
constexpr std::array<unsigned char, 12> protocols{2, 'h', '2', 8, 'h', 't', 't', 'p', '/', '1', '.', '1'};

int chooseProtocol(SSL*, const unsigned char** chosen, unsigned char* length, const unsigned char* offered,
                   unsigned int offeredLength, void*) {
  unsigned char* common = nullptr;
  const int outcome = SSL_select_next_proto(&common, length, protocols.data(), unsigned(protocols.size()),
                                            offered, offeredLength);
  if (outcome != OPENSSL_NPN_NEGOTIATED) {
    return SSL_TLSEXT_ERR_NOACK;
  }
  *chosen = common;
  return SSL_TLSEXT_ERR_OK;
}

bool speaksHttp2(TlsStream& stream) {
  const unsigned char* chosen = nullptr;
  unsigned int length = 0;
  SSL_get0_alpn_selected(stream.native_handle(), &chosen, &length);
  return length == 2 && std::memcmp(chosen, "h2", 2) == 0;
}

template <class Stream>
class ConnectionOver final : public Connection {
 public:
  explicit ConnectionOver(Stream stream) : Connection{stream.get_executor()}, stream_{std::move(stream)} {}

  void read(net::mutable_buffer into, Done done) override { stream_.async_read_some(into, std::move(done)); }
  void write(std::string_view bytes, Done done) override {
    net::async_write(stream_, net::buffer(bytes), std::move(done));
  }

  Stream& stream() { return stream_; }

 private:
  Socket& socket() override { return boost::beast::get_lowest_layer(stream_); }

  Stream stream_;
};

}  // namespace

void Connection::closeAfter(std::chrono::seconds limit) {
  limit_.expires_after(limit);
  limit_.async_wait([weak = weak_from_this()](Error error) {
    const auto self = weak.lock();
    // The limit may have been replaced while this was under way.
    if (!error && self && self->limit_.expiry() <= std::chrono::steady_clock::now()) {
      self->close();
    }
  });
}

void Connection::close() {
  Error ignored;
  socket().close(ignored);
}

void Connection::closeGently() {
  Error ignored;
  socket().shutdown(Socket::shutdown_send, ignored);
  drain();
}

void Connection::drain() {
  closeAfter(silenceLimit);
  // Of no use to TLS any more.
  socket().async_read_some(net::buffer(drained_), Done{[self = shared_from_this()](Error error, std::size_t) {
                             if (!error) {
                               self->drain();
                             }
                           }});
}

std::shared_ptr<Connection> plainConnection(Connection::Socket socket) {
  return std::make_shared<ConnectionOver<Connection::Socket>>(std::move(socket));
}

void acceptTls(Connection::Socket socket, net::ssl::context& context, Greeted greeted) {
  auto connection = std::make_shared<ConnectionOver<TlsStream>>(TlsStream{std::move(socket), context});
  connection->closeAfter(handshakeLimit);
  connection->stream().async_handshake(net::ssl::stream_base::server,
                                       [connection, greeted = std::move(greeted)](Error error) {
                                         if (!error) {
                                           greeted(connection, speaksHttp2(connection->stream()));
                                         }
                                       });
}

void offerHttp2(net::ssl::context& context) {
  SSL_CTX_set_alpn_select_cb(context.native_handle(), chooseProtocol, nullptr);
}

}  // namespace quillmar::sandbox
