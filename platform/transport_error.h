#pragma once

#include <string>

namespace quillmar {

// Why no answer arrived. The sentences are the platform's and are shown unchanged.
struct TransportError {
  enum class Kind {
    cancelled,
    badURL,
    unsupportedURL,
    timedOut,
    cannotFindHost,
    cannotConnectToHost,
    networkConnectionLost,
    notConnectedToInternet,
    badServerResponse,
    httpTooManyRedirects,
    secureConnectionFailed,
    serverCertificateUntrusted,
    appTransportSecurityRequiresSecureConnection,
  };

  Kind kind = Kind::cancelled;
  // The host named in the text about an untrusted certificate; empty for other kinds.
  std::string host;

  std::string localizedDescription() const;
  friend bool operator==(const TransportError&, const TransportError&) = default;
};

}  // namespace quillmar
