#include "platform/transport_error.h"

#include <array>
#include <string_view>
#include <utility>

namespace quillmar {
namespace {

using Kind = TransportError::Kind;

constexpr auto sentences = std::to_array<std::pair<Kind, std::string_view>>({
    {Kind::cancelled, "cancelled"},
    {Kind::badURL, "bad URL"},
    {Kind::unsupportedURL, "unsupported URL"},
    {Kind::timedOut, "The request timed out."},
    {Kind::cannotFindHost, "A server with the specified hostname could not be found."},
    {Kind::cannotConnectToHost, "Could not connect to the server."},
    {Kind::networkConnectionLost, "The network connection was lost."},
    {Kind::notConnectedToInternet, "The Internet connection appears to be offline."},
    {Kind::badServerResponse, "There was a bad response from the server."},
    {Kind::httpTooManyRedirects, "too many HTTP redirects"},
    {Kind::secureConnectionFailed,
     "An SSL error has occurred and a secure connection to the server cannot be made."},
    {Kind::serverCertificateUntrusted,
     "The certificate for this server is invalid. You might be connecting to a server that is pretending to "
     "be "
     "“HOST” which could put your confidential information at risk."},
    {Kind::appTransportSecurityRequiresSecureConnection,
     "The resource could not be loaded because the App Transport Security policy requires the use of a "
     "secure "
     "connection."},
});

}  // namespace

std::string TransportError::localizedDescription() const {
  constexpr std::string_view placeholder = "HOST";
  for (const auto& [known, sentence] : sentences) {
    if (known == kind) {
      std::string text(sentence);
      if (const auto at = text.find(placeholder);
          kind == Kind::serverCertificateUntrusted && at != std::string::npos) {
        text.replace(at, placeholder.size(), host);
      }
      return text;
    }
  }
  return {};
}

}  // namespace quillmar
