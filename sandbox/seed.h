#pragma once

#include "sandbox/time.h"

namespace quillmar::sandbox {

class Database;

enum class Seed { empty, demo };

// The logins of the demo's parents.
inline constexpr const char* demoPrimaryEmail = "ann@example.com";
inline constexpr const char* demoMemberEmail = "ben@example.com";
inline constexpr const char* demoPassword = "quillmar-demo";

// Fills empty tables. The demo is a family of two parents, three children and seven devices, with policies, a
// day of logs, an open invitation and a home network. Only ids and codes differ between runs.
void plant(Seed seed, Database& database, Time now);

}  // namespace quillmar::sandbox
