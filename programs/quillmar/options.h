#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "command_line/command_line.h"

namespace quillmar {

// The options on the command line.
struct Options {
  std::filesystem::path dataDirectory;
  std::optional<std::string> service = {};  // replaces all deployments
  std::string caFile = {};                  // trusted beside the system's authorities
  bool asksForDoctor = false;               // examine this computer, without a window
  bool startsSandbox = false;               // run the stand-in service, and simulate the tunnel
  bool simulatesTunnel = false;
};

// The command line of the program, which is parsed into `options`.
command_line::Program programFor(Options& options);

// The options, or the exit status if the command line asked for a text or was wrong; the text is already
// printed.
std::variant<Options, int> readOptions(const std::vector<std::string>& words);

}  // namespace quillmar
