#pragma once

#include "sandbox/time.h"

namespace quillmar::sandbox {

class Database;

enum class Seed { empty, demo };

// The demo's parents log in with these.
inline constexpr const char* demoPrimaryEmail = "ann@example.com";
inline constexpr const char* demoMemberEmail = "ben@example.com";
inline constexpr const char* demoPassword = "quillmar-demo";

// Fills empty tables. The demo is one family of two parents, three children and seven devices, with policies,
// a day of logs, an open invitation and a home network; but for ids and codes it is the same every time.
void plant(Seed seed, Database& database, Time now);

}  // namespace quillmar::sandbox
