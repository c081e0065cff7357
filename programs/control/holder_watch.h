#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>

#include "platform/common/file_descriptor.h"
#include "platform/linux/instance_lock.h"

namespace quillmar::control {

// Watches the process that holds an installation's lock: it reports when that process can be reached, or
// when the lock becomes free and passes to this process.
class HolderWatch {
 public:
  explicit HolderWatch(std::filesystem::path dataDirectory);
  HolderWatch(const HolderWatch&) = delete;
  HolderWatch& operator=(const HolderWatch&) = delete;
  ~HolderWatch();

  // Starts watching. Call it again after each wait, because directories come and go.
  void listen();
  // The lock, if it has become free since the first wait.
  std::optional<InstanceLock> takeLock();
  // True if there was an event before the deadline, which may be a false alarm.
  bool waitUntil(std::chrono::steady_clock::time_point deadline);

 private:
  struct Release;

  void awaitRelease();

  const std::filesystem::path dataDirectory_;
  FileDescriptor sockets_;
  std::shared_ptr<Release> release_;
  std::stop_source end_;
};

}  // namespace quillmar::control
