#pragma once

#include <filesystem>

#include "platform/simulated/simulated_tunnel.h"

namespace quillmar::control {

// A simulated tunnel finds its configuration again at the next start, of either program, as a real one would.
SimulatedTunnel::Storage tunnelStorageIn(const std::filesystem::path& dataDirectory);

}  // namespace quillmar::control
