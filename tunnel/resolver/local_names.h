#pragma once

#include <optional>
#include <string>

#include "tunnel/dns/query.h"

namespace quillmar::tunnel {

// Answers names that concern only this machine or its network (RFC 6303, 6761, 6762, 7686, 7793, 8375, 9462);
// nullopt for all other names.
std::optional<std::string> localReply(const Query& query);

}  // namespace quillmar::tunnel
