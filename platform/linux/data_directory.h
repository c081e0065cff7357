#pragma once

#include <filesystem>
#include <optional>

#include "platform/linux/file_descriptor.h"

namespace quillmar {

// Where an installation keeps its files: `quillmar` under $XDG_DATA_HOME when that is an absolute path, else
// under
// ~/.local/share. Only named here, not made.
std::filesystem::path dataDirectory();

// Makes the directory, readable by its user only; one that exists stays as it is. False when there is none
// afterwards.
bool createPrivateDirectory(const std::filesystem::path& directory);

// Held by the one instance that may use a data directory. It ends with the process, however that ends.
class InstanceLock {
 public:
  // Nothing when another instance holds it or the directory can't be used.
  static std::optional<InstanceLock> acquire(const std::filesystem::path& directory);

 private:
  explicit InstanceLock(FileDescriptor file) : file_(std::move(file)) {}

  FileDescriptor file_;
};

}  // namespace quillmar
