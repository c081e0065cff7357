#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "tunnel/link/open_file.h"

// The part of netlink(7) that the tunnel needs.
namespace quillmar::tunnel::netlink {

// No message of the kernel is longer.
inline constexpr std::size_t largestRead = std::size_t{64} * 1024;

// Appends to a message's payload.
void appendAttribute(std::string& payload, std::uint16_t type, std::string_view value);
// The value of the first attribute of this type.
std::optional<std::string_view> attribute(std::string_view attributes, std::uint16_t type);

template <class T>
void appendStruct(std::string& payload, const T& value) {
  payload.append(reinterpret_cast<const char*>(&value), sizeof value);
}

// Called with the type and the payload of each received message.
using Visit = std::function<void(std::uint16_t type, std::string_view payload)>;
void visit(std::string_view received, const Visit& visit);

OpenFile open(int protocol, std::uint32_t groups, bool waits);

// Sends requests. Each returns an errno, or zero for success.
class Requests {
 public:
  explicit Requests(int protocol) : socket_(open(protocol, 0, true)) {}

  int request(std::uint16_t type, const std::string& payload);
  int dump(std::uint16_t type, const std::string& payload, const Visit& visit);

 private:
  int send(std::uint16_t type, std::uint16_t flags, const std::string& payload);
  int receive(const Visit& visit);

  OpenFile socket_;
  std::uint32_t sequence_ = 0;
};

}  // namespace quillmar::tunnel::netlink
