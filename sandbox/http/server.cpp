#include "sandbox/http/server.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "sandbox/http/http1_session.h"
#include "sandbox/http/http2_session.h"

namespace quillmar::sandbox {

namespace net = boost::asio;
using net::ip::tcp;

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
    Error error;
    context_.use_certificate_file(certificates.certificate.string(), net::ssl::context::pem, error);
    if (!error) {
      context_.use_private_key_file(certificates.key.string(), net::ssl::context::pem, error);
    }
    if (error) {
      return Failure{"The certificate can't be used: " + error.message() + "."};
    }
    SSL_CTX_set_min_proto_version(context_.native_handle(), TLS1_2_VERSION);
    offerHttp2(context_);
    workers_ = settings.workers;
    if (auto failure = bind(plain_, settings.address, settings.port)) {
      return failure;
    }
    return bind(tls_, settings.address, settings.tlsPort);
  }

  void open(Handler handler) {
    exchange_.emplace(network_, std::move(handler), workers_);
    accept(plain_, [this](tcp::socket socket) { serve(plainConnection(std::move(socket)), false); });
    accept(tls_, [this](tcp::socket socket) {
      acceptTls(std::move(socket), context_, [this](std::shared_ptr<Connection> connection, bool http2) {
        if (http2) {
          std::make_shared<Http2Session>(std::move(connection), *exchange_)->start();
        } else {
          serve(std::move(connection), true);
        }
      });
    });
    thread_ = std::thread{[this] { network_.run(); }};
  }

  void hold(bool holding) { exchange_->hold(holding); }
  int port() const { return plain_.local_endpoint().port(); }
  int tlsPort() const { return tls_.local_endpoint().port(); }

 private:
  using Accepted = std::function<void(tcp::socket)>;

  static std::optional<Failure> bind(tcp::acceptor& acceptor, const std::string& host, int port) {
    Error error;
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

  void serve(std::shared_ptr<Connection> connection, bool secure) {
    std::make_shared<Http1Session>(std::move(connection), *exchange_, secure)->start();
  }

  void accept(tcp::acceptor& acceptor, const Accepted& accepted) {
    acceptor.async_accept([this, &acceptor, accepted](Error error, tcp::socket socket) {
      if (error) {
        return acceptAfterPause(acceptor, accepted);
      }
      Error ignored;
      socket.set_option(tcp::no_delay{true}, ignored);
      accepted(std::move(socket));
      accept(acceptor, accepted);
    });
  }

  // Out of descriptors: retry later.
  void acceptAfterPause(tcp::acceptor& acceptor, const Accepted& accepted) {
    auto timer = std::make_shared<net::steady_timer>(network_, std::chrono::milliseconds{50});
    timer->async_wait([this, &acceptor, accepted, timer](Error error) {
      if (!error) {
        accept(acceptor, accepted);
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
