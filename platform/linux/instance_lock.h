#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/common/file_descriptor.h"

namespace quillmar {

// A lock file of this name in a directory, locked by one process at a time. Released when the process ends,
// however it ends. Can be passed to another process without being free in between.
class InstanceLock {
 public:
  // The holder does the work of the installation in the directory.
  static constexpr std::string_view work = "instance.lock";

  struct Attempt;
  static Attempt attempt(const std::filesystem::path& directory, std::string_view name = work);
  // nullopt if another process holds it or it can't be created.
  static std::optional<InstanceLock> acquire(const std::filesystem::path& directory,
                                             std::string_view name = work);
  // The error that keeps every process from creating the lock. On a read-only disk an existing lock file is
  // enough.
  static std::error_code obstacle(const std::filesystem::path& directory, std::string_view name = work);
  // Waits for the lock on a thread of its own, until it is taken, `unwanted` is stopped or the process ends.
  // Calls `taken` on that thread, with nullopt if the directory can't be used. If it is no longer wanted, the
  // lock is released and `taken` is not called.
  static void whenFree(const std::filesystem::path& directory,
                       std::function<void(std::optional<InstanceLock>)> taken, std::string_view name = work,
                       std::stop_token unwanted = {});

  // Takes over a lock that another process sent as an open file. nullopt if it is another file or a third
  // process holds it.
  static std::optional<InstanceLock> receive(FileDescriptor file, const std::filesystem::path& directory,
                                             std::string_view name = work);
  // The file to send. The receiver has the lock once this process has closed the file.
  static FileDescriptor handOver(InstanceLock lock) { return std::move(lock.file_); }

 private:
  explicit InstanceLock(FileDescriptor file) : file_(std::move(file)) {}

  FileDescriptor file_;
};

// The result of one look: a second one may find another state of the disk.
struct InstanceLock::Attempt {
  std::optional<InstanceLock> lock;
  // What keeps every process from creating it.
  std::error_code obstacle;

  // Whether another process holds it.
  bool isElsewhere() const { return !lock && !obstacle; }
};

}  // namespace quillmar
