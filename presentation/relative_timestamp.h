#pragma once

#include <string>
#include <string_view>

#include "foundation/date_format.h"

namespace quillmar {

// A time as the service writes it, as a person says it: "Just now" (the future too), "5 min ago", "1 hour
// ago", "2 days ago", and from a week on the date. A time without a zone is local; a text that is no time is
// given back as it is.
std::string relativeTimestamp(std::string_view text, Date now, const DateStyles& styles);

}  // namespace quillmar
