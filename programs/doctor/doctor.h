#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>

#include "platform/secure_item_store.h"

namespace quillmar::doctor {

struct Options {
  std::filesystem::path dataDirectory;
  std::optional<std::string> service = std::nullopt;  // in the place of all deployments
  std::string caFile = {};                            // trusted beside the system's authorities
  // What a program with a window uses; one without, which is a child's device, has no use for a reader and a
  // camera either.
  SecureItemStore* keyring = nullptr;
  std::filesystem::path cameraModule = {};  // empty where it is not installed
};

// Looks at this machine for the installation in the data directory, which need not exist, and writes what it
// found. True where the machine has what the installation's role needs.
bool examineMachine(const Options& options, std::ostream& output);

}  // namespace quillmar::doctor
