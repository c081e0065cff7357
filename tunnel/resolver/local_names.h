#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tunnel/dns/query.h"

namespace quillmar::tunnel {

// Answers names that concern only this machine or its network (RFC 6303, 6761, 6762, 7686, 7793, 8375, 9462);
// nullopt for all other names. `name` is the question's in lower case.
std::optional<std::string> localReply(const Query& query, std::string_view name);

}  // namespace quillmar::tunnel
