#include "platform/common/private_directory.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
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

// Missing parents get mode 0700, as XDG directories have. On failure `errno` is set.
void makeMissing(const fs::path& directory) {
  if (statusOf(directory)) {
    errno = EEXIST;
    return;
  }
  if (directory.has_relative_path()) {
    makeMissing(directory.parent_path());
  }
  if (::mkdir(directory.c_str(), S_IRWXU) == 0) {
    // The umask may have removed the user's own rights.
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
  // A failure is ignored, as on a read-only file system.
  if (isOpen) {
    ::chmod(directory.c_str(), S_IRWXU);
  }
  return true;
}

std::optional<std::string> stateOfDisk(fs::path place) {
  struct statvfs disk {};
  while (::statvfs(place.c_str(), &disk) != 0) {
    if (!place.has_relative_path()) {
      return std::nullopt;
    }
    place = place.parent_path();
  }
  if ((disk.f_flag & ST_RDONLY) != 0) {
    return "the disk is read-only";
  }
  return disk.f_bavail == 0 ? std::optional<std::string>("the disk is full") : std::nullopt;
}

}  // namespace quillmar
