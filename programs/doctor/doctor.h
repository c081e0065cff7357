#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>

#include "platform/secure_item_store.h"

namespace quillmar::doctor {

struct Options {
  std::filesystem::path dataDirectory;
  std::optional<std::string> service = std::nullopt;  // replaces all deployments
  std::string caFile = {};                            // trusted beside the system's authorities
  // Null for a program without a window: it is a child's device, so the fingerprint reader and the camera
  // are not examined either.
  SecureItemStore* keyring = nullptr;
  std::filesystem::path cameraModule = {};  // empty where it is not installed
};

// Examines this machine for the installation in the data directory, which need not exist, and writes the
// report. True if the machine has what the installation's role needs.
bool examineMachine(const Options& options, std::ostream& output);

}  // namespace quillmar::doctor
