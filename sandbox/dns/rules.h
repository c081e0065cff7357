#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/database.h"

namespace quillmar::sandbox {

// What a policy says about names, which are in lower case and without the root's dot.
struct Rules {
  bool isBlocked = false;  // the internet is: only allowed and default sites resolve
  std::vector<std::string> blocked{};
  std::vector<std::string> allowed{};
};

// An entry covers its sub-domains. Where entries of both lists cover a name the longer one decides, so that
// one part of a blocked site can be allowed; the same entry in both blocks.
[[nodiscard]] bool blocks(const Rules& rules, std::string_view name);

// By the device's own policy and that of its child, if it has one: what either blocks is blocked.
[[nodiscard]] bool isBlockedFor(Database& database, std::string_view deviceId, std::string_view name);

// Writes a query to the device's log; it is a sign of life as well.
void logQuery(Database& database, std::string_view deviceId, std::string_view name, std::string_view type,
              bool blocked, Time now);

}  // namespace quillmar::sandbox
