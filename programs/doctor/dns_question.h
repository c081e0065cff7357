#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <variant>

namespace quillmar::doctor {

// The reply message, or the errno of a failure; 0 after a timeout.
using DnsReply = std::variant<std::string, int>;

// Asks the server at an IPv4 address for the IPv4 addresses of a name, once, over UDP.
DnsReply askServer(const std::string& server, std::string_view name, std::chrono::milliseconds timeout);

// Whether the name was looked up, whatever the result.
bool isLookedUp(const DnsReply& reply);
// Whether the last record of the message is this IPv4 address.
bool endsWithAddress(std::string_view message, const std::string& address);

}  // namespace quillmar::doctor
