#pragma once

#include "sandbox/time.h"

namespace quillmar::sandbox {

class Database;

enum class Seed { empty, demo };

// Fills empty tables.
void plant(Seed seed, Database& database, Time now);

}  // namespace quillmar::sandbox
