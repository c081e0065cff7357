#pragma once

#include <string>

namespace quillmar {

// Asks a DNS over HTTPS endpoint for the address of a name, as the tunnel of a child's device does. False
// without an answer. Needs curl. `caFile` is trusted beside the system's authorities.
bool askOverHttps(const std::string& endpoint, const std::string& name, const std::string& caFile);

}  // namespace quillmar
