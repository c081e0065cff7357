#pragma once

#include <string>
#include <variant>

#include "tunnel/link/open_file.h"

namespace quillmar::tunnel {

// A network device that carries nothing: what is sent to its own address stays in this machine, and nothing
// is routed through it. It lives as long as its file.
using TunDevice = OpenFile;

// Or what kept it from being made.
std::variant<TunDevice, std::string> openTunDevice(const std::string& name);

// Whoever made it; one that is not there is no problem. The problem, if there is one.
std::string removeDevice(const std::string& name);

}  // namespace quillmar::tunnel
