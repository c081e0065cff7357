#pragma once

#include "sandbox/browsing.h"
#include "sandbox/store/database.h"

namespace quillmar::sandbox {

// Adds a few queries for the online devices, as if they were made now; the devices' policies decide them.
void browse(Database& database, Time now, Dice& dice);

}  // namespace quillmar::sandbox
