#include "tunnel/network/endpoint.h"

#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <charconv>

#include "foundation/ascii.h"
#include "foundation/url.h"

namespace quillmar::tunnel {
namespace {

constexpr std::uint16_t httpsPort = 443;

std::string lowerCased(std::string text) {
  std::ranges::transform(text, text.begin(), asciiLowercased);
  return text;
}

bool isName(std::string_view host) {
  constexpr std::size_t longestName = 253;
  return host.size() <= longestName && std::ranges::all_of(host, [](char c) {
           return isAsciiLetter(c) || isAsciiDigit(c) || c == '-' || c == '.' || c == '_';
         });
}

bool isAddress6(std::string_view host) {
  boost::system::error_code error;
  boost::asio::ip::make_address_v6(host, error);
  return !error;
}

// The port in the text after the host.
std::optional<std::uint16_t> portOf(std::string_view text) {
  if (text.empty() || text == ":") {
    return httpsPort;
  }
  std::uint16_t port = 0;
  const auto read = std::from_chars(text.data() + 1, text.data() + text.size(), port);
  const bool isWhole = text.front() == ':' && read.ec == std::errc() && read.ptr == text.data() + text.size();
  return isWhole && port > 0 ? std::optional(port) : std::nullopt;
}

}  // namespace

std::optional<Endpoint> parseEndpoint(std::string_view text) {
  const auto url = URL::parse(text);
  if (!url || lowerCased(url->scheme().value_or("")) != "https" || !url->host()) {
    return std::nullopt;
  }
  constexpr std::string_view start = "https://";
  const auto rest = text.substr(0, text.find('#')).substr(std::min(start.size(), text.size()));
  const auto authority = rest.substr(0, rest.find_first_of("/?"));
  const bool inBrackets = authority.starts_with('[');
  const auto host = lowerCased(*url->host());
  const auto port = portOf(authority.substr(std::min(authority.size(), host.size() + (inBrackets ? 2 : 0))));
  // With a user name the authority would not begin with the host.
  const auto front = lowerCased(std::string(authority.substr(inBrackets ? 1 : 0, host.size())));
  if (!port || front != host || !(inBrackets ? isAddress6(host) : isName(host))) {
    return std::nullopt;
  }
  const auto path = rest.substr(authority.size());
  return Endpoint{.host = host,
                  .port = *port,
                  .authority = (inBrackets ? '[' + host + ']' : host) +
                               (*port == httpsPort ? "" : ':' + std::to_string(*port)),
                  .path = path.starts_with('/') ? std::string(path) : '/' + std::string(path)};
}

}  // namespace quillmar::tunnel
