#include "tests/sandbox/support/run_command.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <thread>
#include <utility>

extern char** environ;

namespace quillmar::sandbox::test {
namespace {

class Pipe {
 public:
  Pipe() {
    if (pipe2(ends_.data(), O_CLOEXEC) != 0) ends_ = {-1, -1};
  }
  ~Pipe() {
    closeRead();
    closeWrite();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  int read() const { return ends_[0]; }
  int write() const { return ends_[1]; }
  void closeRead() { shut(ends_[0]); }
  void closeWrite() { shut(ends_[1]); }
  int releaseRead() { return std::exchange(ends_[0], -1); }

 private:
  static void shut(int& end) {
    if (end >= 0) ::close(end);
    end = -1;
  }

  std::array<int, 2> ends_{-1, -1};
};

pid_t spawn(const std::vector<std::string>& words, const Pipe* input, const Pipe* output,
            const Pipe* errors) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (input != nullptr) posix_spawn_file_actions_adddup2(&actions, input->read(), STDIN_FILENO);
  if (output != nullptr) posix_spawn_file_actions_adddup2(&actions, output->write(), STDOUT_FILENO);
  if (errors != nullptr) posix_spawn_file_actions_adddup2(&actions, errors->write(), STDERR_FILENO);
  std::vector<char*> arguments;
  for (const auto& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  pid_t process = -1;
  if (posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) process = -1;
  posix_spawn_file_actions_destroy(&actions);
  return process;
}

std::string readAll(int descriptor) {
  std::string text;
  std::array<char, 4096> buffer;
  for (ssize_t size; (size = ::read(descriptor, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), std::size_t(size));
  }
  return text;
}

void writeAll(int descriptor, const std::string& text) {
  for (std::size_t sent = 0; sent < text.size();) {
    const auto size = ::write(descriptor, text.data() + sent, text.size() - sent);
    if (size <= 0) return;
    sent += std::size_t(size);
  }
}

int waitFor(pid_t process) {
  int status = 0;
  if (process < 0 || waitpid(process, &status, 0) != process) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace

CommandResult runCommand(const std::vector<std::string>& words, const std::string& input) {
  // A program that doesn't read all of its input must not kill the test.
  signal(SIGPIPE, SIG_IGN);
  Pipe in;
  Pipe out;
  Pipe err;
  const pid_t process = spawn(words, &in, &out, &err);
  in.closeRead();
  out.closeWrite();
  err.closeWrite();
  CommandResult outcome;
  std::thread writer{[&] {
    writeAll(in.write(), input);
    in.closeWrite();
  }};
  std::thread errorReader{[&] { outcome.errors = readAll(err.read()); }};
  outcome.output = readAll(out.read());
  writer.join();
  errorReader.join();
  outcome.status = waitFor(process);
  return outcome;
}

RunningProgram::RunningProgram(const std::vector<std::string>& words) {
  Pipe out;
  process_ = spawn(words, nullptr, &out, nullptr);
  output_ = out.releaseRead();
}

RunningProgram::~RunningProgram() {
  end(SIGKILL);
  ::close(output_);
}

std::string RunningProgram::readLine() {
  std::string line;
  for (char c = 0; ::read(output_, &c, 1) == 1 && c != '\n';) line += c;
  return line;
}

std::string RunningProgram::readUntil(const std::string& text) {
  std::string all;
  for (char c = 0; ::read(output_, &c, 1) == 1;) {
    all += c;
    if (c == '\n' && all.find(text, all.rfind('\n', all.size() - 2) + 1) != std::string::npos) break;
  }
  return all;
}

int RunningProgram::end(int signal) {
  if (process_ < 0) return -1;
  kill(process_, signal);
  return waitFor(std::exchange(process_, -1));
}

}  // namespace quillmar::sandbox::test
