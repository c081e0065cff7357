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

// Whether this computer is to be looked at, which is done without a window. Asked before there is any
// application: one with a window can't even be made where there is no display.
bool asksForDoctor(int count, char** arguments);

// Ends the process where the words ask for help, or are wrong.
Options parseOptions(const QCoreApplication& application);

}  // namespace quillmar
