#pragma once

#include <optional>
#include <string>

#include "command_line/command_line.h"

namespace quillmar {

command_line::Option authorityOption(std::string& caFile);

// Parses the command line of a tool. Returns the exit status of a tool that has to end at once: because a
// text was requested, the words are wrong, or the file of certificate authorities can't be used.
std::optional<int> endsAtOnce(const command_line::Program& program, int count, char** arguments,
                              const std::string& caFile = {});

}  // namespace quillmar
