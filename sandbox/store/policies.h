#pragma once

#include <string>
#include <string_view>

#include "sandbox/json.h"
#include "sandbox/store/database.h"

namespace quillmar::sandbox {

// Devices, children and home networks each have one policy.
enum class Owner { device, child, homeNetwork };

enum class List { blocked, allowed };

// A policy that blocks nothing.
void addPolicy(Database& database, Owner owner, std::string_view ownerId, Time now);

// With both lists, in the order in which entries were added.
[[nodiscard]] std::optional<Json> policyOf(Database& database, Owner owner, std::string_view ownerId);

void setPolicy(Database& database, Owner owner, std::string_view ownerId, bool isBlocked,
               std::string_view blockMode, Time now);

// An entry that exists keeps its place.
void addDomain(Database& database, Owner owner, std::string_view ownerId, List list, std::string_view domain,
               Time now);

// False if the entry is not in the list.
[[nodiscard]] bool removeDomain(Database& database, Owner owner, std::string_view ownerId, List list,
                                std::string_view domain, Time now);

}  // namespace quillmar::sandbox
