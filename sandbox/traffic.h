#pragma once

#include "sandbox/browsing.h"
#include "sandbox/store/database.h"

namespace quillmar::sandbox {

// Writes a few queries for the devices that are online, decided by their policies, as if they had been asked
// now.
void browse(Database& database, Time now, Dice& dice);

}  // namespace quillmar::sandbox
