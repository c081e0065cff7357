#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/common/authority_file.h"

namespace quillmar::agent {

// What the program ends with, for scripts. They are part of its interface.
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

// What a person wrote behind the program's name.
struct Options {
  Command command = Command::status;
  std::filesystem::path dataDirectory;
  std::optional<std::string> service = {};  // in the place of all deployments
  std::string caFile = {};                  // trusted beside the system's authorities
  bool simulatesTunnel = false;
  bool startsWithSession = false;
  bool tellsEverything = false;
  bool writesJson = false;
  bool isConfirmed = false;
};

// Either what to do, or what to say instead: a text that was asked for, or what is wrong with the words.
struct Parsed {
  std::optional<Options> options = {};
  std::string text = {};
  ExitStatus status = ExitStatus::done;
};

Parsed parse(const std::vector<std::string>& words);

}  // namespace quillmar::agent
