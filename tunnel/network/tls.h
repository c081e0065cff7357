#pragma once

#include <openssl/ssl.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "tunnel/network/endpoint.h"
#include "tunnel/resolver/failure.h"

namespace quillmar::tunnel {

struct OpenSslFree {
  void operator()(SSL* tls) const {
    // Else a connection that was cut would take its session along, and that is just when it is needed.
    SSL_set_shutdown(tls, SSL_SENT_SHUTDOWN | SSL_RECEIVED_SHUTDOWN);
    SSL_free(tls);
  }
  void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
  void operator()(SSL_SESSION* session) const { SSL_SESSION_free(session); }
};
template <class T>
using OpenSslPointer = std::unique_ptr<T, OpenSslFree>;

// TLS between two byte streams that others carry. Only HTTP/2 is spoken inside.
class TlsConnection {
 public:
  explicit TlsConnection(OpenSslPointer<SSL> tls);

  // Bytes from the network.
  void received(std::string_view bytes);
  // Bytes for the network.
  std::string takeOutgoing();

  enum class Handshake { goesOn, done, failed };
  Handshake shakeHands();
  // Why it failed.
  Failure failure() const;
  bool speaksHttp2() const;

  void write(std::string_view text);
  // How much was put into the buffer; zero where there is no more for now, nothing once it has ended.
  std::optional<std::size_t> read(std::span<char> buffer);

 private:
  OpenSslPointer<SSL> tls_;
};

// What all connections to the endpoint share: whom it trusts, and the session to resume.
class TlsClient {
 public:
  // The system's authorities are trusted, and those in the file if one is named. Else what is wrong with it.
  static std::variant<std::unique_ptr<TlsClient>, std::string> make(const std::string& caFile);

  TlsClient(const TlsClient&) = delete;
  TlsClient& operator=(const TlsClient&) = delete;

  // A client for another endpoint, which trusts the same authorities and knows nothing of this one's
  // sessions: who resumes one does not look at the certificate again.
  std::unique_ptr<TlsClient> another() const;

  // Its certificate has to be one for this host.
  TlsConnection connectionTo(const std::string& host);

 private:
  explicit TlsClient(OpenSslPointer<SSL_CTX> context);

  OpenSslPointer<SSL_CTX> context_;
  OpenSslPointer<SSL_SESSION> session_;
};

}  // namespace quillmar::tunnel
