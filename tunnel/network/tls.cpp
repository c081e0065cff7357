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

TlsConnection::TlsConnection(OpenSslPointer<SSL> tls) : tls_(std::move(tls)) {
  SSL_set_bio(tls_.get(), BIO_new(BIO_s_mem()), BIO_new(BIO_s_mem()));
  SSL_set_connect_state(tls_.get());
}

void TlsConnection::received(std::string_view bytes) {
  BIO_write(SSL_get_rbio(tls_.get()), bytes.data(), static_cast<int>(bytes.size()));
}

void TlsConnection::takeOutgoing(std::string& bytes) {
  BIO* const outgoing = SSL_get_wbio(tls_.get());
  bytes.resize(BIO_ctrl_pending(outgoing));
  if (!bytes.empty()) {
    BIO_read(outgoing, bytes.data(), static_cast<int>(bytes.size()));
  }
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
  if (SSL_has_pending(tls_.get()) == 0 && BIO_ctrl_pending(SSL_get_rbio(tls_.get())) == 0) {
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
