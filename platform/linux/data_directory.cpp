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
constexpr mode_t forOthers = S_IRWXG | S_IRWXO;

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
         status.st_uid == ::geteuid() && (status.st_mode & forOthers) == 0;
}

}  // namespace

fs::path dataDirectory() {
  return absolutePathIn("XDG_DATA_HOME").value_or(homeDirectory() / ".local" / "share") / "quillmar";
}

fs::path stateDirectory() {
  return absolutePathIn("XDG_STATE_HOME").value_or(homeDirectory() / ".local" / "state") / "quillmar";
}

fs::path configDirectory() { return absolutePathIn("XDG_CONFIG_HOME").value_or(homeDirectory() / ".config"); }

std::optional<fs::path> runtimeDirectory() {
  const auto root = absolutePathIn("XDG_RUNTIME_DIR");
  return root && isPrivate(*root) ? std::optional(*root / "quillmar") : std::nullopt;
}

}  // namespace quillmar
