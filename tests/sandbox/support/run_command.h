#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace quillmar::sandbox::test {

struct CommandResult {
  int status = -1;  // exit status, or -1 if it didn't end by itself
  std::string output;
  std::string errors;
};

// Runs a program (found through PATH) to its end, with this text as its standard input.
[[nodiscard]] CommandResult runCommand(const std::vector<std::string>& words, const std::string& input = {});

// A program running beside the test; killed when the object goes.
class RunningProgram {
 public:
  explicit RunningProgram(const std::vector<std::string>& words);
  ~RunningProgram();

  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  // Waits for a whole line of its standard output; what there was if it ends before that.
  [[nodiscard]] std::string readLine();

  // All lines up to and with the first that has this text in it; all that there were if it ends before that.
  [[nodiscard]] std::string readUntil(const std::string& text);

  // Sends the signal and waits for the end. Returns the exit status, or minus the signal that ended it.
  int end(int signal);

 private:
  pid_t process_ = -1;
  int output_ = -1;
};

}  // namespace quillmar::sandbox::test
