#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>

#include "platform/common/file_descriptor.h"
#include "platform/linux/instance_lock.h"

namespace quillmar::control {

// Hears what becomes of the process that has an installation's lock: that it can be spoken to, or that the
// lock has become free and is this process's now.
class HolderWatch {
 public:
  explicit HolderWatch(std::filesystem::path dataDirectory);
  HolderWatch(const HolderWatch&) = delete;
  HolderWatch& operator=(const HolderWatch&) = delete;
  ~HolderWatch();

  // From here on nothing is missed. Again after each wait, as directories come and go.
  void listen();
  // The lock, where it was free at some time since the first wait began.
  std::optional<InstanceLock> takeLock();
  // Whether there is news, true or false, before the deadline.
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
