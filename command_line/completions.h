#pragma once

#include <string>

#include "command_line/command_line.h"

// Generates shell completions from the program's table: the commands, the options of the program and of the
// current command, folders for a DIR and files for a FILE.
namespace quillmar::command_line {

std::string bashCompletion(const Program& program);
std::string zshCompletion(const Program& program);
std::string fishCompletion(const Program& program);

}  // namespace quillmar::command_line
