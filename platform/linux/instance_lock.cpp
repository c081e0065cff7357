#include "platform/linux/instance_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

#include "platform/common/private_directory.h"
#include "platform/common/thread_signals.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;

// On failure holds no descriptor but an error number. Locking needs no right to write the file.
FileDescriptor openLockFile(const fs::path& file) {
  if (!createPrivateDirectory(file.parent_path())) {
    return {};
  }
  FileDescriptor writable(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
  const int error = errno;
  FileDescriptor readable(writable ? -1 : ::open(file.c_str(), O_RDONLY | O_CLOEXEC));
  errno = error;
  return writable ? std::move(writable) : std::move(readable);
}

// A lock on a file that was deleted excludes nobody.
bool isStillThere(const FileDescriptor& file, const fs::path& path) {
  struct stat opened {};
  struct stat named {};
  return ::fstat(file.get(), &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

bool lockWaiting(const FileDescriptor& file) {
  int result = 0;
  do {
    result = ::flock(file.get(), LOCK_EX);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

bool lockAtOnce(const FileDescriptor& file) { return ::flock(file.get(), LOCK_EX | LOCK_NB) == 0; }

FileDescriptor waitFor(const fs::path& path, const std::stop_token& unwanted) {
  for (FileDescriptor file = openLockFile(path); file && lockWaiting(file); file = openLockFile(path)) {
    if (unwanted.stop_requested() || isStillThere(file, path)) {
      return file;
    }
  }
  return {};
}

}  // namespace

InstanceLock::Attempt InstanceLock::attempt(const fs::path& directory, std::string_view name) {
  FileDescriptor file = openLockFile(directory / name);
  if (!file) {
    return {.lock = {}, .obstacle = std::error_code(errno, std::generic_category())};
  }
  return {.lock = receive(std::move(file), directory, name), .obstacle = {}};
}

std::optional<InstanceLock> InstanceLock::acquire(const fs::path& directory, std::string_view name) {
  return attempt(directory, name).lock;
}

std::error_code InstanceLock::obstacle(const fs::path& directory, std::string_view name) {
  return openLockFile(directory / name) ? std::error_code() : std::error_code(errno, std::generic_category());
}

void InstanceLock::whenFree(const fs::path& directory, std::function<void(std::optional<InstanceLock>)> taken,
                            std::string_view name, std::stop_token unwanted) {
  std::thread([path = directory / name, taken = std::move(taken), unwanted = std::move(unwanted)] {
    blockSignalsOfThisThread();
    FileDescriptor file = waitFor(path, unwanted);
    if (unwanted.stop_requested()) {
      return;
    }
    taken(file ? std::optional(InstanceLock(std::move(file))) : std::nullopt);
  }).detach();
}

std::optional<InstanceLock> InstanceLock::receive(FileDescriptor file, const fs::path& directory,
                                                  std::string_view name) {
  if (!file || !isStillThere(file, directory / name) || !lockAtOnce(file)) {
    return std::nullopt;
  }
  return InstanceLock(std::move(file));
}

}  // namespace quillmar
