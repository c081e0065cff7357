#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillmar::tunnel {

// The URL of the endpoint. The path identifies the device: it is a secret and never logged.
struct Endpoint {
  std::string host{};  // a name, or an address without brackets
  std::uint16_t port = 443;
  std::string authority{};  // as in HTTP: "doh.example", "[::1]:8443"
  std::string path{};       // with the query
};

// nullopt unless the text is an https URL with a host.
std::optional<Endpoint> parseEndpoint(std::string_view text);

}  // namespace quillmar::tunnel
