#pragma once

#include <string>

namespace quillmar::tunnel {

// Deletes the connection tracking entries of DNS, since the kernel applies new rules to new flows only.
// Returns the problem, or an empty text.
std::string forgetDnsFlows();

}  // namespace quillmar::tunnel
