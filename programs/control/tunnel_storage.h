#pragma once

#include <filesystem>

#include "platform/simulated/simulated_tunnel.h"

namespace quillmar::control {

// Stores a simulated tunnel's configuration for later starts of either program.
SimulatedTunnel::Storage tunnelStorageIn(const std::filesystem::path& dataDirectory);

}  // namespace quillmar::control
