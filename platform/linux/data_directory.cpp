#include "platform/linux/data_directory.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <array>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

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

}  // namespace

fs::path dataDirectory() {
  return absolutePathIn("XDG_DATA_HOME").value_or(homeDirectory() / ".local" / "share") / "quillmar";
}

bool createPrivateDirectory(const fs::path& directory) {
  std::error_code error;
  if (fs::is_directory(directory, error)) {
    return true;
  }
  fs::create_directories(directory.parent_path(), error);
  ::mkdir(directory.c_str(), S_IRWXU);
  return fs::is_directory(directory, error);
}

std::optional<InstanceLock> InstanceLock::acquire(const fs::path& directory) {
  if (!createPrivateDirectory(directory)) {
    return std::nullopt;
  }
  FileDescriptor file(
      ::open((directory / "instance.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file || flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
    return std::nullopt;
  }
  return InstanceLock(std::move(file));
}

}  // namespace quillmar
