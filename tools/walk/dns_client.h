#pragma once

#include <QString>
#include <string>

namespace quillmar {

// Asks a DNS over HTTPS endpoint for a name's address, as the tunnel of a child's device would; false where
// no answer came. Needs curl. `caFile` is trusted beside the system's authorities.
bool askOverHttps(const std::string& endpoint, const std::string& name, const QString& caFile);

}  // namespace quillmar
