#pragma once

#include <string>

#include "sandbox/http/message.h"
#include "sandbox/outcome.h"

namespace quillmar::sandbox {

// Posts JSON to a service on this machine, for the program's own commands. Blocks.
[[nodiscard]] Outcome<Answer> post(int port, const std::string& target, const std::string& body);

}  // namespace quillmar::sandbox
