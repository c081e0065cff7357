#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/database.h"

namespace quillmar::sandbox {

// The rules of a policy. Names are in lower case without the trailing dot.
struct Rules {
  bool isBlocked = false;  // the whole internet: only allowed and default sites resolve
  std::vector<std::string> blocked{};
  std::vector<std::string> allowed{};
};

// An entry covers its subdomains. If entries of both lists cover a name, the longer one decides, so a part of
// a blocked site can be allowed. An entry in both lists blocks.
[[nodiscard]] bool blocks(const Rules& rules, std::string_view name);

// True if the device's policy or its child's blocks the name.
[[nodiscard]] bool isBlockedFor(Database& database, std::string_view deviceId, std::string_view name);

// Adds the query to the device's log and marks the device as seen.
void logQuery(Database& database, std::string_view deviceId, std::string_view name, std::string_view type,
              bool blocked, Time now);

}  // namespace quillmar::sandbox
