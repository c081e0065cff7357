#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/simulated/simulated_tunnel.h"

namespace quillmar {

// The saved configurations as one text and back. A text that is none gives no configurations.
std::string tunnelText(const std::vector<SavedTunnel>& saved);
std::vector<SavedTunnel> savedTunnels(std::string_view text);

}  // namespace quillmar
