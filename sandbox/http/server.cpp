#include "sandbox/http/server.h"

#include <array>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstring>
#include <optional>
#include <thread>

#include "sandbox/http/http1_session.h"
#include "sandbox/http/http2_session.h"

namespace quillmar::sandbox {
namespace {

namespace net = boost::asio;
using net::ip::tcp;

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

// The TLS handshake, up to the ALPN result.
class Handshake : public std::enable_shared_from_this<Handshake> {
 public:
  Handshake(tcp::socket socket, net::ssl::context& context, Exchange& exchange)
      : stream_{boost::beast::tcp_stream{std::move(socket)}, context}, exchange_{exchange} {}

  void start() {
    boost::beast::get_lowest_layer(stream_).expires_after(std::chrono::seconds{15});
    stream_.async_handshake(net::ssl::stream_base::server, [self = shared_from_this()](auto error) {
      if (!error) {
        self->ended();
      }
    });
  }

 private:
  void ended() {
    if (speaksHttp2(stream_)) {
      std::make_shared<Http2Session>(std::move(stream_), exchange_)->start();
    } else {
      std::make_shared<Http1Session<TlsStream>>(std::move(stream_), exchange_, true)->start();
    }
  }

  TlsStream stream_;
  Exchange& exchange_;
};

}  // namespace

class HttpServer::Implementation {
 public:
  Implementation() : plain_{network_}, tls_{network_}, context_{net::ssl::context::tls_server} {}

  ~Implementation() {
    network_.stop();
    if (thread_.joinable()) {
      thread_.join();
    }
  }

  std::optional<Failure> bind(const Settings& settings, const Certificates& certificates) {
    boost::system::error_code error;
    context_.use_certificate_file(certificates.certificate.string(), net::ssl::context::pem, error);
    if (!error) {
      context_.use_private_key_file(certificates.key.string(), net::ssl::context::pem, error);
    }
    if (error) {
      return Failure{"The certificate can't be used: " + error.message() + "."};
    }
    SSL_CTX_set_min_proto_version(context_.native_handle(), TLS1_2_VERSION);
    SSL_CTX_set_alpn_select_cb(context_.native_handle(), chooseProtocol, nullptr);
    workers_ = settings.workers;
    if (auto failure = bind(plain_, settings.address, settings.port)) {
      return failure;
    }
    return bind(tls_, settings.address, settings.tlsPort);
  }

  void open(Handler handler) {
    exchange_.emplace(network_, std::move(handler), workers_);
    accept(plain_, [this](tcp::socket socket) {
      std::make_shared<Http1Session<boost::beast::tcp_stream>>(boost::beast::tcp_stream{std::move(socket)},
                                                               *exchange_, false)
          ->start();
    });
    accept(tls_, [this](tcp::socket socket) {
      std::make_shared<Handshake>(std::move(socket), context_, *exchange_)->start();
    });
    thread_ = std::thread{[this] { network_.run(); }};
  }

  void hold(bool holding) { exchange_->hold(holding); }
  int port() const { return plain_.local_endpoint().port(); }
  int tlsPort() const { return tls_.local_endpoint().port(); }

 private:
  static std::optional<Failure> bind(tcp::acceptor& acceptor, const std::string& host, int port) {
    boost::system::error_code error;
    const tcp::endpoint address{net::ip::make_address_v4(host, error), static_cast<unsigned short>(port)};
    if (!error) {
      acceptor.open(address.protocol(), error);
    }
    if (!error) {
      acceptor.set_option(tcp::acceptor::reuse_address{true}, error);
    }
    if (!error) {
      acceptor.bind(address, error);
    }
    if (!error) {
      acceptor.listen(net::socket_base::max_listen_connections, error);
    }
    if (!error) {
      return std::nullopt;
    }
    return Failure{"Port " + std::to_string(port) + " can't be used: " + error.message() + "."};
  }

  template <class Serve>
  void accept(tcp::acceptor& acceptor, Serve serve) {
    acceptor.async_accept([this, &acceptor, serve](auto error, tcp::socket socket) {
      if (error) {
        return acceptAfterPause(acceptor, serve);
      }
      boost::system::error_code ignored;
      socket.set_option(tcp::no_delay{true}, ignored);
      serve(std::move(socket));
      accept(acceptor, serve);
    });
  }

  // Out of descriptors: retry later.
  template <class Serve>
  void acceptAfterPause(tcp::acceptor& acceptor, Serve serve) {
    auto timer = std::make_shared<net::steady_timer>(network_, std::chrono::milliseconds{50});
    timer->async_wait([this, &acceptor, serve, timer](auto error) {
      if (!error) {
        accept(acceptor, serve);
      }
    });
  }

  net::io_context network_{1};
  tcp::acceptor plain_;
  tcp::acceptor tls_;
  net::ssl::context context_;
  std::size_t workers_ = 1;
  std::optional<Exchange> exchange_;
  std::thread thread_;
};

HttpServer::HttpServer(std::unique_ptr<Implementation> implementation)
    : implementation_{std::move(implementation)} {}
HttpServer::~HttpServer() = default;

Outcome<std::unique_ptr<HttpServer>> HttpServer::bind(const Settings& settings,
                                                      const Certificates& certificates) {
  auto implementation = std::make_unique<Implementation>();
  if (auto failure = implementation->bind(settings, certificates)) {
    return *failure;
  }
  return std::unique_ptr<HttpServer>{new HttpServer{std::move(implementation)}};
}

void HttpServer::open(Handler handler) { implementation_->open(std::move(handler)); }
void HttpServer::hold(bool holding) { implementation_->hold(holding); }
int HttpServer::port() const { return implementation_->port(); }
int HttpServer::tlsPort() const { return implementation_->tlsPort(); }

}  // namespace quillmar::sandbox
