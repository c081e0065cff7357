#pragma once

#include <string>
#include <variant>

#include "tunnel/link/open_file.h"

namespace quillmar::tunnel {

// A network device for the tunnel's addresses. No packet passes through it: packets to its own addresses stay
// in this machine, and nothing is routed to it. It exists as long as its file is open.
using TunDevice = OpenFile;

// The device, or the problem.
std::variant<TunDevice, std::string> openTunDevice(const std::string& name);

// Removes the device, even if another process created it. Returns the problem, or an empty text. A missing
// device is no problem.
std::string removeDevice(const std::string& name);

}  // namespace quillmar::tunnel
