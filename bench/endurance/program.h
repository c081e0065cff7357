#pragma once

#include <sys/types.h>

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/common/file_descriptor.h"

namespace quillmar::endurance {

// An expectation that did not hold, in programs of several threads: whoever catches it has stopped the rest.
struct Fault final : std::runtime_error {
  using std::runtime_error::runtime_error;
};

inline void require(bool held, const std::string& otherwise) {
  if (!held) {
    throw Fault(otherwise);
  }
}

using Words = std::vector<std::string>;
using Variables = std::map<std::string, std::string>;

// A process that is talked to over pipes, with these variables for its whole environment. Killed by the
// destructor.
class Program {
 public:
  explicit Program(const Words& words, const Variables& variables = {});
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  pid_t process() const { return process_; }
  // The end of its output that this process has. It hangs up when the program has ended.
  int output() const { return output_.get(); }
  // A program that has ended hears nothing.
  void say(const std::string& line);
  // Ends its standard input.
  void endInput() { input_ = FileDescriptor(); }
  // What it says up to the end of the first line with one of the texts, or to its own end. A fault if it is
  // silent for half a minute.
  std::string readUntil(const Words& texts);
  std::string readUntil(const std::string& text) { return readUntil(Words{text}); }
  // What it has said by now.
  std::string readAll();
  // Sends the signal, unless it is 0, and waits. Returns the exit status, or minus the signal that ended it.
  int end(int signal);

 private:
  bool readMore(int patience);

  const std::string name_;
  pid_t process_ = -1;
  FileDescriptor input_;
  FileDescriptor output_;
  std::string said_;
};

// The number after `name:` in /proc/PROCESS/FILE; a fault if there is none.
long long processFigure(pid_t process, const std::string& file, const std::string& name);
std::size_t openFilesOf(pid_t process);
// Of all threads, from the scheduler's statistics.
double processorSecondsOf(pid_t process);

}  // namespace quillmar::endurance
