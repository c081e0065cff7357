#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/simulated/simulated_tunnel.h"

namespace quillmar {

// Serialises the saved configurations. An invalid text gives none.
std::string tunnelText(const std::vector<SavedTunnel>& saved);
std::vector<SavedTunnel> savedTunnels(std::string_view text);

}  // namespace quillmar
