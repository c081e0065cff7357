#pragma once

#include <string>
#include <string_view>

#include "client/records/dns_log.h"

namespace quillmar {

// The site that a parent sees and acts on: the last two labels of a name, or three under endings like "co.uk"
// which two fixed lists tell, in lower case. A name of less than two labels is its own site. Any thread.
std::string rootDomain(std::string_view name);

// The same without a copy where it stands in the name as it is: a view of `name`, else of `storage`.
std::string_view rootDomain(std::string_view name, std::string& storage);

inline std::string rootDomain(const DNSLog& log) { return rootDomain(log.domain); }

}  // namespace quillmar
