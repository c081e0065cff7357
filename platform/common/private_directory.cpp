#include "platform/common/private_directory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

namespace quillmar {
namespace {

namespace fs = std::filesystem;

constexpr mode_t forOthers = S_IRWXG | S_IRWXO;

std::optional<struct stat> statusOf(const fs::path& file) {
  struct stat status {};
  return ::stat(file.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

// As the desktop wants the folders that its own are in; `errno` says why there is none.
void makeMissing(const fs::path& directory) {
  if (statusOf(directory)) {
    errno = EEXIST;
    return;
  }
  if (directory.has_relative_path()) {
    makeMissing(directory.parent_path());
  }
  if (::mkdir(directory.c_str(), S_IRWXU) == 0) {
    // A umask may have taken away what is the user's own.
    ::chmod(directory.c_str(), S_IRWXU);
  }
}

}  // namespace

bool belongsToAnother(const fs::path& directory) {
  const auto status = statusOf(directory);
  return status && S_ISDIR(status->st_mode) && status->st_uid != ::geteuid();
}

bool createPrivateDirectory(const fs::path& directory) {
  makeMissing(directory);
  const int cause = errno == EEXIST ? ENOTDIR : errno;
  const auto status = statusOf(directory);
  if (!status || !S_ISDIR(status->st_mode)) {
    errno = cause;
    return false;
  }
  if (status->st_uid != ::geteuid()) {
    errno = EPERM;
    return false;
  }
  const bool isOpen = (status->st_mode & forOthers) != 0 && (status->st_mode & S_ISVTX) == 0;
  // Where even this can't be changed, as on a disk that is only read, the work goes on.
  if (isOpen) {
    ::chmod(directory.c_str(), S_IRWXU);
  }
  return true;
}

}  // namespace quillmar
