#include "tests/programs/pseudo_terminal.h"

#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <utility>

namespace quillmar::test {
namespace {

std::vector<char*> pointersTo(const std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (const auto& word : words) {
    pointers.push_back(const_cast<char*>(word.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

PseudoTerminal::PseudoTerminal(const std::vector<std::string>& words,
                               const std::vector<std::string>& environment, unsigned short rows) {
  const auto arguments = pointersTo(words);
  const auto variables = pointersTo(environment);
  const winsize size{.ws_row = rows, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
  int terminal = -1;
  process_ = forkpty(&terminal, nullptr, nullptr, &size);
  if (process_ == 0) {
    execve(arguments.front(), arguments.data(), variables.data());
    _exit(127);
  }
  terminal_ = FileDescriptor(terminal);
}

PseudoTerminal::~PseudoTerminal() {
  if (process_ > 0) {
    kill(process_, SIGKILL);
    wait();
  }
}

std::string PseudoTerminal::readUntil(const std::string& text) {
  std::array<char, 4096> buffer{};
  while (text.empty() || unread_.find(text) == std::string::npos) {
    const ssize_t size = ::read(terminal_.get(), buffer.data(), buffer.size());
    if (size <= 0) {
      return std::exchange(unread_, {});
    }
    unread_.append(buffer.data(), static_cast<std::size_t>(size));
  }
  const auto end = unread_.find(text) + text.size();
  std::string shown = unread_.substr(0, end);
  unread_.erase(0, end);
  return shown;
}

void PseudoTerminal::type(const std::string& keys) const {
  if (::write(terminal_.get(), keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    kill(process_, SIGKILL);
  }
}

int PseudoTerminal::wait() {
  int status = 0;
  const pid_t process = std::exchange(process_, -1);
  if (process < 0 || waitpid(process, &status, 0) != process) {
    return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace quillmar::test
