#include "programs/control/holder_watch.h"

#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <mutex>
#include <system_error>
#include <utility>

#include "platform/linux/local_socket.h"
#include "platform/linux/poll_until.h"

namespace quillmar::control {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// The directory, or its nearest parent that exists.
fs::path nearest(fs::path directory) {
  std::error_code error;
  while (!fs::is_directory(directory, error) && directory.has_relative_path()) {
    directory = directory.parent_path();
  }
  return directory;
}

}  // namespace

// Through this the thread that waits for the lock passes it on.
struct HolderWatch::Release {
  std::mutex mutex;
  std::optional<InstanceLock> lock;
  const FileDescriptor event{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

HolderWatch::HolderWatch(fs::path dataDirectory) : dataDirectory_(std::move(dataDirectory)) {}

HolderWatch::~HolderWatch() { end_.request_stop(); }

void HolderWatch::listen() {
  sockets_ = FileDescriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  for (const fs::path& socket : localSocketPaths(dataDirectory_)) {
    ::inotify_add_watch(sockets_.get(), nearest(socket.parent_path()).c_str(),
                        IN_CREATE | IN_MOVED_TO | IN_DELETE_SELF);
  }
}

std::optional<InstanceLock> HolderWatch::takeLock() {
  if (!release_) {
    return std::nullopt;
  }
  const std::scoped_lock guard(release_->mutex);
  return std::exchange(release_->lock, std::nullopt);
}

bool HolderWatch::waitUntil(Clock::time_point deadline) {
  if (!release_) {
    awaitRelease();
  }
  std::array<pollfd, 2> news{pollfd{sockets_.get(), POLLIN, 0}, pollfd{release_->event.get(), POLLIN, 0}};
  if (!pollUntil(news, deadline)) {
    return false;
  }
  eventfd_t count = 0;
  ::eventfd_read(release_->event.get(), &count);
  return true;
}

void HolderWatch::awaitRelease() {
  release_ = std::make_shared<Release>();
  InstanceLock::whenFree(
      dataDirectory_,
      [release = release_](std::optional<InstanceLock> lock) {
        const std::scoped_lock guard(release->mutex);
        release->lock = std::move(lock);
        ::eventfd_write(release->event.get(), 1);
      },
      InstanceLock::work, end_.get_token());
}

}  // namespace quillmar::control
