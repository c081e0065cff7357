#pragma once

#include <QString>
#include <filesystem>
#include <optional>
#include <string>

class QCoreApplication;

namespace quillmar {

// What a person wrote behind the program's name.
struct Options {
  std::filesystem::path dataDirectory;
  std::optional<std::string> service;  // in the place of all deployments
  std::string caFile;                  // trusted beside the system's authorities
  bool startsSandbox = false;          // the stand-in service beside the window, and a simulated tunnel
  bool simulatesTunnel = false;
};

// Ends the process where the words ask for help, or are wrong.
Options parseOptions(const QCoreApplication& application);

}  // namespace quillmar
