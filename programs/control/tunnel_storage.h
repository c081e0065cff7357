#pragma once

#include <filesystem>

#include "platform/simulated/simulated_tunnel.h"

namespace quillmar::control {

// Stores a simulated tunnel's configuration for the next start of either program, as the system does for a
// real one.
SimulatedTunnel::Storage tunnelStorageIn(const std::filesystem::path& dataDirectory);

}  // namespace quillmar::control
