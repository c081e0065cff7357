#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillmar::tunnel {

// Where questions go. The path tells whose they are: it is a secret of this machine and in no log.
struct Endpoint {
  std::string host{};  // a name, or an address without brackets
  std::uint16_t port = 443;
  std::string authority{};  // as HTTP wants it: "doh.example", "[::1]:8443"
  std::string path{};       // with the query
};

// Nothing for what is no https URL with a host.
std::optional<Endpoint> parseEndpoint(std::string_view text);

}  // namespace quillmar::tunnel
