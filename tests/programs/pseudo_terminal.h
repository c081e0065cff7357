#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "platform/common/file_descriptor.h"

namespace quillmar::test {

// A program in its own terminal; killed when the object is destroyed.
class PseudoTerminal {
 public:
  // `words` are the program's path and its arguments; `environment` is its whole environment.
  PseudoTerminal(const std::vector<std::string>& words, const std::vector<std::string>& environment,
                 unsigned short rows = 60);
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;
  ~PseudoTerminal();

  // The output up to and including this text, or all output if the program ended before.
  std::string readUntil(const std::string& text);
  std::string readToEnd() { return readUntil({}); }
  void type(const std::string& keys) const;
  // Closes the terminal.
  void hangUp() { terminal_ = FileDescriptor(); }
  // The exit status, or the negated number of the signal that ended it.
  int wait();

 private:
  FileDescriptor terminal_;
  pid_t process_ = -1;
  std::string unread_;
};

}  // namespace quillmar::test
