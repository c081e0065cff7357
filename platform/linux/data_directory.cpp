#include "platform/linux/data_directory.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace quillmar {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t passwordEntrySize = 16384;

std::optional<fs::path> absolutePathIn(const char* variable) {
  const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): read once, at start
  if (!value || !fs::path(value).is_absolute()) {
    return std::nullopt;
  }
  return fs::path(value);
}

fs::path homeDirectory() {
  if (auto home = absolutePathIn("HOME")) {
    return *home;
  }
  passwd entry{};
  passwd* found = nullptr;
  std::array<char, passwordEntrySize> buffer{};
  getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
  return found ? fs::path(found->pw_dir) : fs::path("/");
}

bool isPrivate(const fs::path& directory) {
  struct stat status {};
  return ::lstat(directory.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == ::geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

}  // namespace

fs::path dataDirectory() {
  return absolutePathIn("XDG_DATA_HOME").value_or(homeDirectory() / ".local" / "share") / "quillmar";
}

fs::path configDirectory() { return absolutePathIn("XDG_CONFIG_HOME").value_or(homeDirectory() / ".config"); }

std::optional<fs::path> runtimeDirectory() {
  const auto root = absolutePathIn("XDG_RUNTIME_DIR");
  return root && isPrivate(*root) ? std::optional(*root / "quillmar") : std::nullopt;
}

bool createPrivateDirectory(const fs::path& directory) {
  std::error_code error;
  if (fs::is_directory(directory, error)) {
    return true;
  }
  fs::create_directories(directory.parent_path(), error);
  const bool isMade = ::mkdir(directory.c_str(), S_IRWXU) == 0;
  const int cause = errno == EEXIST ? ENOTDIR : errno;
  const bool isThere = isMade || fs::is_directory(directory, error);
  errno = cause;
  return isThere;
}

}  // namespace quillmar
