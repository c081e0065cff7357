#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/common/file_descriptor.h"

namespace quillmar {

// Held by one process at a time for each file of this name in a directory. It ends with the process, however
// that ends; or it is handed to another process, and is free at no moment in between.
class InstanceLock {
 public:
  // Whoever has this one does the work of the installation in the directory.
  static constexpr std::string_view work = "instance.lock";

  // Nothing when another process holds it, or there can't be one here.
  static std::optional<InstanceLock> acquire(const std::filesystem::path& directory,
                                             std::string_view name = work);
  // Why there can't be one here, whoever wants it. A disk that can't be written has those that were made
  // before.
  static std::error_code obstacle(const std::filesystem::path& directory, std::string_view name = work);
  // Waits for it, on a thread of its own that nothing but the lock or the end of the process ends. `taken`
  // runs there, with nothing where the directory can't be used.
  static void whenFree(const std::filesystem::path& directory,
                       std::function<void(std::optional<InstanceLock>)> taken, std::string_view name = work);

  // The other process's end of a hand-over: the open file as it was received. Nothing where it is not this
  // lock, or is held by somebody else.
  static std::optional<InstanceLock> receive(FileDescriptor file, const std::filesystem::path& directory,
                                             std::string_view name = work);
  // To be sent to another process, which has the lock once this one no longer has the file.
  static FileDescriptor handOver(InstanceLock lock) { return std::move(lock.file_); }

 private:
  explicit InstanceLock(FileDescriptor file) : file_(std::move(file)) {}

  FileDescriptor file_;
};

}  // namespace quillmar
