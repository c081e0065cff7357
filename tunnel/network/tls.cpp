#include "tunnel/network/tls.h"

#include <openssl/err.h>
#include <openssl/x509v3.h>

#include <array>
#include <boost/asio/ip/address.hpp>
#include <cstring>

#include "tunnel/network/authorities.h"

namespace quillmar::tunnel {
namespace {

constexpr std::string_view http2 = "h2";
constexpr std::array<unsigned char, 3> offeredProtocols{2, 'h', '2'};

// Also clears OpenSSL's error queue, which is per thread and would keep old errors.
std::string lastError() {
  const char* reason = ERR_reason_error_string(ERR_peek_last_error());
  ERR_clear_error();
  return reason != nullptr ? reason : "the connection was closed";
}

// SSL_get_error is misled by errors of earlier calls. Clearing an empty queue takes longer than this look.
void forgetErrors() {
  if (ERR_peek_error() != 0) {
    ERR_clear_error();
  }
}

bool isAddress(const std::string& host) {
  boost::system::error_code error;
  boost::asio::ip::make_address(host, error);
  return !error;
}

}  // namespace

std::size_t TlsConnection::Wire::take(std::span<char> room) {
  const auto size = incoming.copy(room.data(), room.size(), taken);
  taken += size;
  if (!hasIncoming()) {
    incoming.clear();
    taken = 0;
  }
  return size;
}

// Does without the bookkeeping of OpenSSL's own buffers in memory, 1,500 instructions a query.
const BIO_METHOD* TlsConnection::wireMethod() {
  static const BIO_METHOD* const shared = [] {
    BIO_METHOD* const made = BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "wire");
    BIO_meth_set_read(made, [](BIO* bio, char* buffer, int room) {
      auto& wire = *static_cast<Wire*>(BIO_get_data(bio));
      BIO_clear_retry_flags(bio);
      if (!wire.hasIncoming()) {
        BIO_set_retry_read(bio);
        return -1;
      }
      return static_cast<int>(wire.take({buffer, static_cast<std::size_t>(room)}));
    });
    BIO_meth_set_write(made, [](BIO* bio, const char* bytes, int size) {
      static_cast<Wire*>(BIO_get_data(bio))->outgoing.append(bytes, static_cast<std::size_t>(size));
      return size;
    });
    BIO_meth_set_ctrl(made,
                      [](BIO*, int command, long, void*) { return command == BIO_CTRL_FLUSH ? 1L : 0L; });
    return made;
  }();
  return shared;
}

TlsConnection::TlsConnection(OpenSslPointer<SSL> tls)
    : wire_(std::make_unique<Wire>()), tls_(std::move(tls)) {
  BIO* const bio = BIO_new(wireMethod());
  BIO_set_data(bio, wire_.get());
  BIO_set_init(bio, 1);
  SSL_set_bio(tls_.get(), bio, bio);
  SSL_set_connect_state(tls_.get());
}

void TlsConnection::received(std::string_view bytes) { wire_->incoming += bytes; }

void TlsConnection::takeOutgoing(std::string& bytes) {
  bytes.clear();
  bytes.swap(wire_->outgoing);
}

TlsConnection::Handshake TlsConnection::shakeHands() {
  forgetErrors();
  const int outcome = SSL_do_handshake(tls_.get());
  if (outcome == 1) {
    return Handshake::done;
  }
  return SSL_get_error(tls_.get(), outcome) == SSL_ERROR_WANT_READ ? Handshake::goesOn : Handshake::failed;
}

Failure TlsConnection::failure() const {
  if (const long verdict = SSL_get_verify_result(tls_.get()); verdict != X509_V_OK) {
    return {Cause::untrusted, X509_verify_cert_error_string(verdict)};
  }
  if (ERR_GET_REASON(ERR_peek_last_error()) == SSL_R_TLSV1_ALERT_NO_APPLICATION_PROTOCOL) {
    ERR_clear_error();
    return {Cause::noHttp2};
  }
  return {Cause::unreachable, "no TLS, " + lastError()};
}

bool TlsConnection::speaksHttp2() const {
  const unsigned char* chosen = nullptr;
  unsigned int length = 0;
  SSL_get0_alpn_selected(tls_.get(), &chosen, &length);
  return std::string_view(reinterpret_cast<const char*>(chosen), length) == http2;
}

void TlsConnection::write(std::string_view text) {
  SSL_write(tls_.get(), text.data(), static_cast<int>(text.size()));
}

std::optional<std::size_t> TlsConnection::read(std::span<char> buffer) {
  if (SSL_has_pending(tls_.get()) == 0 && !wire_->hasIncoming()) {
    return 0;
  }
  forgetErrors();
  const int size = SSL_read(tls_.get(), buffer.data(), static_cast<int>(buffer.size()));
  if (size > 0) {
    return static_cast<std::size_t>(size);
  }
  return SSL_get_error(tls_.get(), size) == SSL_ERROR_WANT_READ ? std::optional<std::size_t>(0)
                                                                : std::nullopt;
}

TlsClient::TlsClient(OpenSslPointer<SSL_CTX> context) : context_(std::move(context)) {
  SSL_CTX* const made = context_.get();
  SSL_CTX_set_app_data(made, this);
  SSL_CTX_set_min_proto_version(made, TLS1_2_VERSION);
  SSL_CTX_set_verify(made, SSL_VERIFY_PEER, nullptr);
  SSL_CTX_set_alpn_protos(made, offeredProtocols.data(), static_cast<unsigned>(offeredProtocols.size()));
  SSL_CTX_set_read_ahead(made, 1);
  SSL_CTX_set_session_cache_mode(made, SSL_SESS_CACHE_CLIENT | SSL_SESS_CACHE_NO_INTERNAL);
  SSL_CTX_sess_set_new_cb(made, [](SSL* tls, SSL_SESSION* session) {
    auto& client = *static_cast<TlsClient*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(tls)));
    client.session_.reset(session);
    return 1;  // this takes ownership of the session
  });
}

std::variant<std::unique_ptr<TlsClient>, std::string> TlsClient::make(const std::string& caFile) {
  OpenSslPointer<SSL_CTX> context(SSL_CTX_new(TLS_client_method()));
  if (!context || !trustAuthorities(SSL_CTX_get_cert_store(context.get()), authoritiesDirectory())) {
    return "TLS can't be used: " + lastError();
  }
  if (!caFile.empty() && SSL_CTX_load_verify_file(context.get(), caFile.c_str()) != 1) {
    return "the certificate authorities in '" + caFile + "' can't be read: " + lastError();
  }
  return std::unique_ptr<TlsClient>(new TlsClient(std::move(context)));
}

std::unique_ptr<TlsClient> TlsClient::another() const {
  OpenSslPointer<SSL_CTX> context(SSL_CTX_new(TLS_client_method()));
  SSL_CTX_set1_cert_store(context.get(), SSL_CTX_get_cert_store(context_.get()));
  return std::unique_ptr<TlsClient>(new TlsClient(std::move(context)));
}

TlsConnection TlsClient::connectionTo(const std::string& host) {
  OpenSslPointer<SSL> tls(SSL_new(context_.get()));
  if (isAddress(host)) {
    X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(tls.get()), host.c_str());
  } else {
    SSL_set1_host(tls.get(), host.c_str());
    SSL_set_hostflags(tls.get(), X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    SSL_set_tlsext_host_name(tls.get(), host.c_str());
  }
  if (session_) {
    SSL_set_session(tls.get(), session_.get());
  }
  return TlsConnection(std::move(tls));
}

}  // namespace quillmar::tunnel
