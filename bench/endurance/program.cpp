#include "bench/endurance/program.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace quillmar::endurance {
namespace {

namespace fs = std::filesystem;

constexpr int longestSilence = 30'000;  // milliseconds

std::vector<char*> pointersTo(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

fs::path folderOf(pid_t process) { return fs::path("/proc") / std::to_string(process); }

}  // namespace

Program::Program(const Words& words, const Variables& variables) : name_(words.at(0)) {
  // One socket each way. It takes no signal to write to a program that has ended.
  std::array<int, 2> toProgram{};
  std::array<int, 2> fromProgram{};
  require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, toProgram.data()) == 0 &&
              ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fromProgram.data()) == 0,
          "There are no pipes.");
  input_ = FileDescriptor(toProgram[0]);
  output_ = FileDescriptor(fromProgram[0]);
  const FileDescriptor itsInput(toProgram[1]);
  const FileDescriptor itsOutput(fromProgram[1]);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, itsInput.get(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, itsOutput.get(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, itsOutput.get(), STDERR_FILENO);
  Words arguments = words;
  Words environment;
  for (const auto& [name, value] : variables) {
    environment.push_back(name + '=' + value);
  }
  const int error = ::posix_spawnp(&process_, name_.c_str(), &actions, nullptr, pointersTo(arguments).data(),
                                   pointersTo(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  require(error == 0, name_ + " does not start: " + std::strerror(error));
}

Program::~Program() { end(SIGKILL); }

void Program::say(const std::string& line) {
  const std::string text = line + '\n';
  static_cast<void>(::send(input_.get(), text.data(), text.size(), MSG_NOSIGNAL));
}

bool Program::readMore(int patience) {
  pollfd readable{output_.get(), POLLIN, 0};
  if (::poll(&readable, 1, patience) == 0) {
    require(patience == 0, name_ + " is silent after: " + said_);
    return false;
  }
  std::array<char, 4096> buffer{};
  const auto size = ::recv(output_.get(), buffer.data(), buffer.size(), 0);
  if (size > 0) {
    said_.append(buffer.data(), static_cast<std::size_t>(size));
  }
  return size > 0;
}

std::string Program::readUntil(const Words& texts) {
  for (;;) {
    auto found = std::string::npos;
    for (const auto& text : texts) {
      found = std::min(found, said_.find(text));
    }
    const auto lineEnd = found == std::string::npos ? found : said_.find('\n', found);
    if (lineEnd != std::string::npos) {
      std::string rest = said_.substr(lineEnd + 1);
      said_.resize(lineEnd + 1);
      return std::exchange(said_, std::move(rest));
    }
    if (!readMore(longestSilence)) {
      return std::exchange(said_, {});
    }
  }
}

std::string Program::readAll() {
  while (readMore(0)) {
  }
  return std::exchange(said_, {});
}

int Program::end(int signal) {
  if (process_ < 0) {
    return -1;
  }
  if (signal != 0) {
    ::kill(process_, signal);
  }
  int status = 0;
  while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

long long processFigure(pid_t process, const std::string& file, const std::string& name) {
  std::ifstream in(folderOf(process) / file);
  for (std::string word; in >> word;) {
    if (long long figure = 0; word == name + ':' && in >> figure) {
      return figure;
    }
  }
  throw Fault("/proc has no " + name + " of a process that should run.");
}

std::size_t openFilesOf(pid_t process) {
  const fs::directory_iterator files(folderOf(process) / "fd");
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

double processorSecondsOf(pid_t process) {
  double seconds = 0;
  for (const auto& thread : fs::directory_iterator(folderOf(process) / "task")) {
    double nanoseconds = 0;
    std::ifstream(thread.path() / "schedstat") >> nanoseconds;
    seconds += nanoseconds / 1e9;
  }
  return seconds;
}

}  // namespace quillmar::endurance
