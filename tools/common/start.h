#pragma once

#include <optional>
#include <string>

#include "command_line/command_line.h"

namespace quillmar {

command_line::Option authorityOption(std::string& caFile);

// Stores the words of a tool's command line. The exit status of a tool that ends at once: it was asked for a
// text, the words are wrong, or the file of certificate authorities that they name can't be used.
std::optional<int> endsAtOnce(const command_line::Program& program, int count, char** arguments,
                              const std::string& caFile = {});

}  // namespace quillmar
