#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace quillmar::sandbox::test {

struct CommandResult {
  int status = -1;  // exit status, or -1 if a signal ended it
  std::string output;
  std::string errors;
};

// Runs a program, found through PATH, with this standard input until it exits.
[[nodiscard]] CommandResult runCommand(const std::vector<std::string>& words, const std::string& input = {});

// A program beside the test, killed by the destructor.
class RunningProgram {
 public:
  explicit RunningProgram(const std::vector<std::string>& words);
  ~RunningProgram();

  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  // The next whole line of standard output; a partial one if the program ends first.
  [[nodiscard]] std::string readLine();

  // The lines up to and including the first that contains this text; all lines if the program ends first.
  [[nodiscard]] std::string readUntil(const std::string& text);

  // Sends the signal and waits. Returns the exit status, or minus the signal that ended the program.
  int end(int signal);

 private:
  pid_t process_ = -1;
  int output_ = -1;
};

}  // namespace quillmar::sandbox::test
