#pragma once

#include <optional>
#include <string>

#include "foundation/date.h"

namespace quillmar {

// "Just now", "2 minutes ago"; nothing for what lies an hour and more back.
std::optional<std::string> recentInWords(Date time, Date now);

}  // namespace quillmar
