#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foundation/date_format.h"

namespace quillmar {

// The time in a text of the service. A time without a zone is local.
std::optional<Date> parsedTimestamp(std::string_view text, const DateStyles& styles);

// Formats a timestamp of the service relative to now: "Just now" (future times too), "5 min ago", "1 hour
// ago", "2 days ago", and the date from one week on. A text that is not a time is returned unchanged.
std::string relativeTimestamp(std::string_view text, Date now, const DateStyles& styles);

}  // namespace quillmar
