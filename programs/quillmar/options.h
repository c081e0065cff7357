#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "command_line/command_line.h"

namespace quillmar {

// What a person wrote behind the program's name.
struct Options {
  std::filesystem::path dataDirectory;
  std::optional<std::string> service = {};  // in the place of all deployments
  std::string caFile = {};                  // trusted beside the system's authorities
  bool asksForDoctor = false;               // to look at this computer, without a window
  bool startsSandbox = false;               // the stand-in service beside the window, and a simulated tunnel
  bool simulatesTunnel = false;
};

// What is understood, and kept in these options.
command_line::Program programFor(Options& options);

// The options; or the exit status where the words ask for a text or are wrong, which has been answered.
std::variant<Options, int> readOptions(const std::vector<std::string>& words);

}  // namespace quillmar
