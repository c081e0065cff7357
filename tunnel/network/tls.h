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
    // OpenSSL would otherwise discard the session of a connection that broke, which is needed to connect
    // again.
    SSL_set_shutdown(tls, SSL_SENT_SHUTDOWN | SSL_RECEIVED_SHUTDOWN);
    SSL_free(tls);
  }
  void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
  void operator()(SSL_SESSION* session) const { SSL_SESSION_free(session); }
};
template <class T>
using OpenSslPointer = std::unique_ptr<T, OpenSslFree>;

// TLS on bytes in memory; the caller transfers them. It offers HTTP/2 only.
class TlsConnection {
 public:
  explicit TlsConnection(OpenSslPointer<SSL> tls);

  // Takes bytes from the network.
  void received(std::string_view bytes);
  // Replaces `bytes` by those for the network.
  void takeOutgoing(std::string& bytes);

  enum class Handshake { goesOn, done, failed };
  Handshake shakeHands();
  // Why the handshake failed.
  Failure failure() const;
  bool speaksHttp2() const;

  void write(std::string_view text);
  // The number of bytes put into the buffer: zero if there are none now, nullopt after the end.
  std::optional<std::size_t> read(std::span<char> buffer);

 private:
  // OpenSSL's end of the network.
  struct Wire {
    std::string incoming{};
    std::size_t taken = 0;  // of the incoming bytes
    std::string outgoing{};

    bool hasIncoming() const { return taken < incoming.size(); }
    std::size_t take(std::span<char> room);
  };
  static const BIO_METHOD* wireMethod();

  std::unique_ptr<Wire> wire_;
  OpenSslPointer<SSL> tls_;
};

// Shared by the connections to one endpoint: the trusted authorities, and the session to resume.
class TlsClient {
 public:
  // Trusts the system's authorities and those in the file, if one is given. Returns the problem if it can't.
  static std::variant<std::unique_ptr<TlsClient>, std::string> make(const std::string& caFile);

  TlsClient(const TlsClient&) = delete;
  TlsClient& operator=(const TlsClient&) = delete;

  // A client for another endpoint, with the same authorities and without a session: the certificate is not
  // verified again when a session is resumed.
  std::unique_ptr<TlsClient> another() const;

  // The certificate has to be valid for this host.
  TlsConnection connectionTo(const std::string& host);

 private:
  explicit TlsClient(OpenSslPointer<SSL_CTX> context);

  OpenSslPointer<SSL_CTX> context_;
  OpenSslPointer<SSL_SESSION> session_;
};

}  // namespace quillmar::tunnel
