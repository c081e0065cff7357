#pragma once

#include <string>

namespace quillmar {

// Why no answer of the service arrived. The sentences are the platform's own and are shown as they stand.
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
  // The host that the text of an untrusted certificate names; empty for every other kind.
  std::string host;

  std::string localizedDescription() const;
  friend bool operator==(const TransportError&, const TransportError&) = default;
};

}  // namespace quillmar
