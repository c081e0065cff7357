#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tunnel/dns/query.h"

namespace quillmar::tunnel {

// The addresses that a name server gives for a name.
struct AddressRecords {
  std::vector<std::string> addresses{};  // in wire format: 4 or 16 bytes each
  std::chrono::seconds life{0};          // the shortest TTL
};

// nullopt if the message does not answer this question. An answer without addresses is valid.
std::optional<AddressRecords> readAddressRecords(std::string_view message, const Question& question);

// A query for the host's addresses; nullopt if the host is not a valid name.
std::optional<Query> queryFor(std::string_view host, std::uint16_t type);

}  // namespace quillmar::tunnel
