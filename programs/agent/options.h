#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "command_line/command_line.h"
#include "platform/common/authority_file.h"

namespace quillmar::agent {

// The exit statuses. Scripts rely on them.
enum class ExitStatus {
  done = 0,
  failed = 1,
  usage = 2,
  notEnrolled = 3,
  parentsDevice = 4,
  busy = 5,
  notProtected = 6,
  noAuthorities = unusableAuthorities,
  cancelled = 130
};

enum class Command { enroll, run, status, sync, reset, doctor };

// The options on the command line.
struct Options {
  Command command = Command::status;
  std::filesystem::path dataDirectory;
  std::optional<std::string> service = {};  // replaces all deployments
  std::string caFile = {};                  // trusted beside the system's authorities
  bool simulatesTunnel = false;
  bool startsWithSession = false;
  bool tellsEverything = false;
  bool writesJson = false;
  bool isConfirmed = false;
};

using Parsed = command_line::Parsed<Options, ExitStatus>;

// The command line of the program, which is parsed into `options`.
command_line::Program programFor(Options& options);

Parsed parse(const std::vector<std::string>& words);

}  // namespace quillmar::agent
