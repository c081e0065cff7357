#pragma once

#include <string>
#include <string_view>

#include "client/records/dns_log.h"

namespace quillmar {

// The site of a domain name: its last two labels, or three under a listed ending like "co.uk", in lower case.
// A name of fewer than two labels is its own site. Any thread.
std::string rootDomain(std::string_view name);

// Avoids a copy: returns a view into `name` if the site is there as is, else into `storage`.
std::string_view rootDomain(std::string_view name, std::string& storage);

inline std::string rootDomain(const DNSLog& log) { return rootDomain(log.domain); }

}  // namespace quillmar
