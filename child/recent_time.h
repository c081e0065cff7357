#pragma once

#include <optional>
#include <string>

#include "foundation/date.h"

namespace quillmar {

// "Just now", "2 minutes ago"; nullopt for times an hour ago or earlier.
std::optional<std::string> recentInWords(Date time, Date now);

}  // namespace quillmar
