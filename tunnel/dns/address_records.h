#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tunnel/dns/query.h"

namespace quillmar::tunnel {

// What a server says of a name's addresses.
struct AddressRecords {
  std::vector<std::string> addresses{};  // as on the wire: 4 or 16 bytes each
  std::chrono::seconds life{0};          // of all of them
};

// Nothing for what is no good answer to this question. That the name has no addresses is one.
std::optional<AddressRecords> readAddressRecords(std::string_view message, const Question& question);

// A question of this machine's own; nothing for a name that can't be asked for.
std::optional<Query> queryFor(std::string_view host, std::uint16_t type);

}  // namespace quillmar::tunnel
