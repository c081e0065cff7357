#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "bench/give_up.h"

extern char** environ;

// Other programs, for benchmarks that run some.
namespace quillmar::bench {

using Command = std::vector<std::string>;
namespace fs = std::filesystem;

// A process, killed by the destructor; its output goes to a file.
class Program {
 public:
  Program(Command command, const fs::path& output) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    std::vector<char*> arguments;
    for (std::string& word : command) {
      arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    if (posix_spawnp(&process_, arguments.front(), &actions, nullptr, arguments.data(), environ) != 0) {
      giveUp("can't start " + command.front());
    }
    posix_spawn_file_actions_destroy(&actions);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program() {
    if (process_ > 0) {
      ::kill(process_, SIGKILL);
      wait();
    }
  }

  // Its exit status.
  int wait() {
    int status = 0;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  // The time of all threads, from the scheduler's statistics: /proc/PID/stat is only sampled at clock ticks.
  double processorMicroseconds() const {
    double all = 0;
    for (const auto& thread : fs::directory_iterator(folder() / "task")) {
      double nanoseconds = 0;
      std::ifstream(thread.path() / "schedstat") >> nanoseconds;
      all += nanoseconds / 1000;
    }
    return all;
  }
  // PSS in MiB.
  double proportionalMemory() const { return number(folder() / "smaps_rollup", "Pss:") / 1024; }
  // The voluntary context switches of all threads so far.
  long wakeUps() const {
    long all = 0;
    for (const auto& thread : fs::directory_iterator(folder() / "task")) {
      all += static_cast<long>(number(thread.path() / "status", "voluntary_ctxt_switches:"));
    }
    return all;
  }

 private:
  fs::path folder() const { return fs::path("/proc") / std::to_string(process_); }
  // The number after a label in a file.
  static double number(const fs::path& file, const std::string& label) {
    std::ifstream in(file);
    for (std::string word; in >> word;) {
      if (double found = 0; word == label && in >> found) {
        return found;
      }
    }
    return 0;
  }

  pid_t process_ = -1;
};

inline bool isInstalled(const std::string& program) {
  std::istringstream folders(std::getenv("PATH"));  // NOLINT(concurrency-mt-unsafe): no thread yet
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (::access((fs::path(folder) / program).c_str(), X_OK) == 0) {
      return true;
    }
  }
  return false;
}

inline std::string contents(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

inline std::string written(const fs::path& file, const std::string& text) {
  std::ofstream(file) << text;
  return file.string();
}

}  // namespace quillmar::bench
