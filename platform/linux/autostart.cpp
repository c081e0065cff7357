#include "platform/linux/autostart.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/linux/data_directory.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr const char* unit = "quillmar-agent.service";
constexpr std::string_view entryName = "quillmar-agent.desktop";
constexpr std::string_view entry = R"([Desktop Entry]
Type=Application
Name=Quillmar protection
Comment=Keeps this device's internet protection running
TryExec=quillmar-agent
Exec=quillmar-agent run
Icon=live.quillmar.Quillmar
NoDisplay=true
)";

bool hasSystemd() {
  const auto runtime = runtimeDirectory();
  std::error_code error;
  return runtime && fs::exists(runtime->parent_path() / "systemd" / "private", error);
}

// A program without input and output, found through PATH. Nothing where it can't be started.
std::optional<pid_t> spawn(Words words, short flags = 0) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
  }
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, static_cast<short>(flags | POSIX_SPAWN_SETSIGMASK));
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  pid_t process = 0;
  const int result =
      posix_spawnp(&process, arguments.front(), &actions, &attributes, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return result == 0 ? std::optional(process) : std::nullopt;
}

bool succeeds(const Words& words) {
  const auto process = spawn(words);
  int status = 0;
  return process && ::waitpid(*process, &status, 0) == *process && WIFEXITED(status) &&
         WEXITSTATUS(status) == 0;
}

std::optional<std::string> unless(bool isDone, std::string_view problem) {
  return isDone ? std::nullopt : std::optional<std::string>(problem);
}

bool writeEntry(const fs::path& file) {
  std::error_code error;
  fs::create_directories(file.parent_path(), error);
  std::ofstream out(file, std::ios::trunc);
  out << entry;
  out.flush();
  return out.good();
}

}  // namespace

std::optional<std::string> enableAutostart() {
  if (hasSystemd()) {
    return unless(succeeds({"systemctl", "--user", "enable", "--now", unit}),
                  "systemd could not enable quillmar-agent.service; 'systemctl --user status quillmar-agent' "
                  "tells more.");
  }
  const fs::path file = configDirectory() / "autostart" / entryName;
  if (!writeEntry(file)) {
    return "The entry " + file.string() + " could not be written.";
  }
  return unless(spawn({"quillmar-agent", "run"}, POSIX_SPAWN_SETSID).has_value(),
                "quillmar-agent could not be started.");
}

std::optional<std::string> disableAutostart() {
  if (hasSystemd()) {
    return unless(succeeds({"systemctl", "--user", "disable", unit}),
                  "systemd could not disable quillmar-agent.service.");
  }
  std::error_code error;
  fs::remove(configDirectory() / "autostart" / entryName, error);
  return unless(!error, "The autostart entry could not be removed.");
}

}  // namespace quillmar
