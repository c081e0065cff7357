#include "platform/common/http_target.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <strings.h>

#include <utility>

#include "foundation/url.h"
#include "platform/transport_error.h"

namespace quillmar {
namespace {

using Kind = TransportError::Kind;

constexpr std::uint32_t loopbackNetwork = 127;

Error transportError(Kind kind) { return TransportError{kind, {}}; }

bool isOfHttp(const std::string& scheme) {
  return strcasecmp(scheme.c_str(), "https") == 0 || strcasecmp(scheme.c_str(), "http") == 0;
}

std::string withoutBrackets(std::string host) {
  if (host.starts_with('[')) {
    return host.substr(1, host.size() - 2);
  }
  return host;
}

}  // namespace

HttpTarget::HttpTarget(std::string text, Handle handle) : text_(std::move(text)), handle_(std::move(handle)) {
  curl_url_set(handle_.get(), CURLUPART_USER, nullptr, 0);
  curl_url_set(handle_.get(), CURLUPART_PASSWORD, nullptr, 0);
  scheme_ = part(CURLUPART_SCHEME);
  host_ = withoutBrackets(part(CURLUPART_HOST));
  port_ = part(CURLUPART_PORT, CURLU_DEFAULT_PORT);
}

Result<HttpTarget> HttpTarget::parse(const std::string& url) {
  const auto parsed = URL::parse(url);
  if (!parsed) {
    return transportError(Kind::badURL);
  }
  if (const auto scheme = parsed->scheme(); !scheme || !isOfHttp(*scheme)) {
    return transportError(Kind::unsupportedURL);
  }
  if (!parsed->host()) {
    return transportError(Kind::badURL);
  }
  return parseRedirect(url);
}

Result<HttpTarget> HttpTarget::parseRedirect(const std::string& url) {
  Handle handle(curl_url());
  if (curl_url_set(handle.get(), CURLUPART_URL, url.c_str(), CURLU_NON_SUPPORT_SCHEME | CURLU_PATH_AS_IS) !=
      CURLUE_OK) {
    return transportError(Kind::badURL);
  }
  HttpTarget target(url, std::move(handle));
  if (!isOfHttp(target.scheme_)) {
    return transportError(Kind::unsupportedURL);
  }
  return target;
}

bool HttpTarget::isLoopback() const {
  in_addr v4{};
  if (inet_pton(AF_INET, host_.c_str(), &v4) == 1) {
    return ntohl(v4.s_addr) >> 24U == loopbackNetwork;
  }
  in6_addr v6{};
  if (inet_pton(AF_INET6, host_.c_str(), &v6) == 1) {
    return IN6_IS_ADDR_LOOPBACK(&v6);
  }
  return strcasecmp(host_.c_str(), "localhost") == 0;
}

bool HttpTarget::hasSameOrigin(const HttpTarget& other) const {
  return scheme_ == other.scheme_ && port_ == other.port_ &&
         strcasecmp(host_.c_str(), other.host_.c_str()) == 0;
}

std::string HttpTarget::part(CURLUPart part, unsigned flags) const {
  char* text = nullptr;
  if (curl_url_get(handle_.get(), part, &text, flags) != CURLUE_OK) {
    return {};
  }
  const std::unique_ptr<char, decltype(&curl_free)> owned(text, &curl_free);
  return owned.get();
}

}  // namespace quillmar
